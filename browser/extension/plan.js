// What to fill into a form from the card, and what to ask the owner first.
import {sourceOf, textsFor} from "./values.js";

const lists = {email: "emails", phone: "phones", address: "addresses"};
// A field may say which of several it wants; donors and the owner have words of their own for it.
const labels = {home: /home|priv/i, work: /work|office|business/i, mobile: /mobile|cell|handy/i, fax: /fax/i, pager: /pager/i};
const byLabel = (entries, hint) => entries.find((entry) => labels[hint]?.test(entry.label));

// Questions are about one kind, an address also about one group of the form.
const questionOf = (field) => {
  const kind = sourceOf(field.token);
  return kind === "address" ? `address ${field.group}`.trim() : kind;
};

// The form that the owner means: the one that has the focus, else the one with the most to fill.
export function formInFront(frames) {
  const forms = frames.flatMap(({frameId, result}) =>
    (result?.forms ?? []).map((form) => ({...form, frameId, language: result.language})));
  const open = (form) => form.fields.filter((field) => !field.hasContent).length;
  return forms.sort((a, b) => Number(b.hasFocus) - Number(a.hasFocus) || open(b) - open(a))[0] ?? null;
}

// An entry is remembered by this, not by its text.
export async function keyOf(entry) {
  const {shown} = entry;
  const digest = await crypto.subtle.digest("SHA-256", new TextEncoder().encode(`quenlet ${shown}`));
  return [...new Uint8Array(digest).slice(0, 8)].map((byte) => byte.toString(16).padStart(2, "0")).join("");
}

// What has to be asked: [{id, kind, group, entries, chosen, isRemembered}] for each kind of which the card
// has several and the form wants one. `remembered` and `chosenNow` map ids to keys; `chosen` is an index.
export async function questionsFor(form, card, remembered, chosenNow = {}) {
  const questions = new Map();
  for (const field of form?.fields ?? []) {
    const kind = sourceOf(field.token);
    const entries = card[lists[kind]] ?? [];
    const id = questionOf(field);
    if (field.hasContent || entries.length < 2 || questions.has(id) || isSettled(field, entries)) continue;
    const keys = await Promise.all(entries.map(keyOf));
    const known = keys.indexOf(remembered[id]);
    const now = keys.indexOf(chosenNow[id]);
    questions.set(id, {id, kind, group: kind === "address" ? field.group : "", entries, keys,
      chosen: Math.max(now >= 0 ? now : known, 0), isRemembered: known >= 0});
  }
  return [...questions.values()];
}

// Nothing else stands in for a fax.
const isSettled = ({hint}, entries) => hint === "fax" || hint === "pager" || byLabel(entries, hint) !== undefined;

function entryFor(field, card, choices) {
  const kind = sourceOf(field.token);
  if (kind === "name") return card.name;
  const entries = card[lists[kind]] ?? [];
  return isSettled(field, entries) ? byLabel(entries, field.hint) : entries[choices[questionOf(field)] ?? 0];
}

// The wishes for filler.js, and for each field of the form what becomes of it: {token, group, index} with
// `shown`, the text that is filled in, or `why` not.
export function planFor(form, card, choices) {
  const wishes = [];
  const fields = [];
  for (const field of form?.fields ?? []) {
    const entry = {token: field.token, group: field.group, index: field.index};
    fields.push(entry);
    if (field.hasContent) {
      entry.why = "hasContent";
    } else if (field.token === "photo") {
      entry.why = card.picture ? undefined : "unknown";
      entry.shown = "your picture";
      if (card.picture) wishes.push({index: field.index, picture: card.picture});
    } else {
      const source = entryFor(field, card, choices);
      const beside = new Set(form.fields.filter((other) => other.group === field.group).map((other) => other.token));
      const candidates = source ? textsFor(field, source, beside, form.language) : [];
      if (candidates.length > 0) wishes.push({index: field.index, candidates});
      else entry.why = "unknown";
      entry.shown = candidates[0];
    }
  }
  return {wishes, fields};
}
