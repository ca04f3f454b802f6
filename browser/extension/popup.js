// The popup of the button: what the form in front of the owner asks for, the card, and why something is not
// on it. All texts from elsewhere are set as text.
import {Agent} from "./agent.js";
import {forget, recall, remember, siteOf} from "./choices.js";
import {currentTab, fillForm, lookAtPage, undoFill} from "./page.js";
import {planFor, questionsFor} from "./plan.js";

const tokenNames = {
  "name": "name", "honorific-prefix": "title", "given-name": "given name", "additional-name": "middle name",
  "family-name": "family name", "honorific-suffix": "suffix", "nickname": "nickname", "email": "e-mail",
  "tel": "phone", "tel-country-code": "country code", "tel-national": "phone", "tel-area-code": "area code",
  "tel-local": "phone", "tel-local-prefix": "phone, first part", "tel-local-suffix": "phone, second part",
  "tel-extension": "extension", "street-address": "street", "house-number": "house number",
  "address-line1": "street", "address-line2": "address, line 2", "address-line3": "address, line 3",
  "address-level1": "region", "address-level2": "city", "address-level3": "district",
  "postal-code": "postcode", "country": "country", "country-name": "country", "photo": "picture",
};
const kindNames = {email: "E-mail", phone: "Phone", address: "Address"};
const reasons = {
  hasContent: "has something in it already",
  unknown: "not on your card",
  noSuchChoice: "the list has no such choice",
  doesNotFit: "the field does not take it",
  refused: "the page did not keep it",
  gone: "the page has changed",
};

const at = (id) => document.getElementById(id);
const show = (id, isShown = true) => (at(id).hidden = !isShown);
const counted = (number, noun) => `${number} ${noun}${number === 1 ? "" : "s"}`;

function element(name, {text, ...attributes} = {}, children = []) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) made.setAttribute(key, value);
  if (text !== undefined) made.textContent = text;
  made.append(...children);
  return made;
}

// `card` is the one that the questions are about, `filled` the wishes that were filled last.
// `asks` counts how often the questions were looked for.
let tab, card, form, questions = [], filled = null, asks = 0;

const groupName = (group) => group.replace(/section-/g, "");
const choices = () => Object.fromEntries(questions.map(({id}) => [id, Number(at(`question ${id}`).value)]));

function showState(card) {
  const isWell = card.state === "ready" && card.notes.length === 0;
  const sentences = [card.sentence, ...card.notes].filter(Boolean);
  at("state").replaceChildren(...sentences.map((text) => element("p", {text})));
  show("state", !isWell && sentences.length > 0);
}

function showQuestions() {
  at("questions").replaceChildren(...questions.map(({id, kind, group, entries, chosen}) => {
    const select = element("select", {id: `question ${id}`}, entries.map((entry, place) => element("option", {
      value: place, text: [entry.shown, entry.label, entry.source].filter(Boolean).join(" · "),
    })));
    select.value = chosen;
    select.addEventListener("change", showPlan);
    const name = [kindNames[kind], groupName(group)].filter(Boolean).join(", ");
    return element("label", {text: name}, [select]);
  }));
  show("remember-row", questions.length > 0 && siteOf(tab) !== null);
  show("forget", questions.some((question) => question.isRemembered));
}

// What would be filled in, or what has become of it.
function showFields(fields, outcomes) {
  at("fields").replaceChildren(...fields.map(({token, group, index, shown, why}) => {
    const {outcome, shown: put} = outcomes?.get(index) ?? {outcome: "gone"};
    const reason = why ?? (outcomes && outcome !== "filled" ? outcome : null);
    const name = [tokenNames[token], groupName(group)].filter(Boolean).join(", ");
    const text = reason ? reasons[reason] : put ?? shown ?? "";
    return element("li", {text: `${name}: `}, [element("span", {class: reason ? "why" : "value", text})]);
  }));
}

function showPlan() {
  const {wishes, fields} = planFor(form, card, choices());
  showFields(fields);
  at("fill-title").textContent = "This form";
  at("fill-button").textContent = wishes.length > 0 ? `Fill ${counted(wishes.length, "field")}` : "Nothing to fill";
  at("fill-button").disabled = wishes.length === 0;
}

async function fill(event) {
  event.preventDefault();
  at("fill-button").disabled = true;
  const chosen = choices();
  const {wishes, fields} = planFor(form, card, chosen);
  try {
    const results = await fillForm(tab, form, wishes, filled ?? []);
    const number = results.filter(({outcome}) => outcome === "filled").length;
    filled = wishes;
    showFields(fields, new Map(results.map((result) => [result.index, result])));
    at("fill-button").textContent = "Filled";
    say(`Filled ${counted(number, "field")}.`);
    if (number > 0) show("undo");
    if (at("remember").checked) {
      await remember(tab, Object.fromEntries(questions.map(({id, keys}) => [id, keys[chosen[id]]])));
      show("forget", questions.length > 0 && siteOf(tab) !== null);
    }
  } catch (failure) {
    say(`The page could not be filled: ${failure.message}`);
  }
}

function say(sentence) {
  at("outcome").textContent = sentence;
  show("outcome");
}

function entryLine({shown, label, source, until}) {
  const parts = [element("span", {text: shown})];
  if (label) parts.push(" ", element("span", {class: "label", text: label}));
  const from = source === "your own card" || source === "donated" ? source : `from ${source}`;
  parts.push(" ", element("span", {class: "source", text: until ? `${from} until ${until}` : from}));
  return element("li", {}, parts);
}

function showCard(card) {
  const {name, emails, phones, addresses, picture} = card;
  const parts = [at("card-title")];
  if (picture) {
    parts.unshift(element("img", {class: "picture", alt: "Picture on your card", src: `data:${picture.type};base64,${picture.bytes}`}));
  }
  if (name.shown) parts.push(element("ul", {}, [entryLine(name)]));
  for (const [title, entries] of [["E-mail", emails], ["Phone", phones], ["Address", addresses]]) {
    if (entries.length > 0) parts.push(element("h3", {text: title}), element("ul", {}, entries.map(entryLine)));
  }
  at("card").replaceChildren(...parts);
  show("card", parts.length > 1);
}

function showLeftOut(card) {
  const list = at("left-out").querySelector("details");
  list.replaceChildren(at("left-out-title"), ...card.leftOut.flatMap(({title, advice, values}) => [
    element("h3", {text: title}),
    element("ul", {}, values.map(({value, kind, source, because}) => element("li", {text: value}, [
      element("div", {class: "source", text: [kind, source && `from ${source}`, because].filter(Boolean).join(" · ")}),
    ]))),
    ...(advice ? [element("p", {class: "note", text: `${advice}.`})] : []),
  ]));
  show("left-out", card.leftOut.length > 0);
}

async function look() {
  try {
    const page = await lookAtPage(tab);
    form = page.form;
    show("undo", page.isFilled);
    if (!form) at("no-form").textContent = "There is no form on this page that your card could fill.";
  } catch {
    form = null;
    at("no-form").textContent = "The browser lets no extension into this page.";
  }
  show("no-form", !form);
  show("fill", form !== null);
}

async function showAll(agent) {
  const latest = await agent.card();
  showState(latest);
  showCard(latest);
  showLeftOut(latest);
  if (!filled) await ask(latest);
  document.body.removeAttribute("aria-busy");
  return latest;
}

// What was chosen already stays chosen.
async function ask(latest) {
  const turn = ++asks;
  const remembered = await recall(tab);
  const chosenNow = Object.fromEntries(questions.map(({id, keys}) => [id, keys[choices()[id]]]));
  const next = await questionsFor(form, latest, remembered, chosenNow);
  // The form may have been filled meanwhile, or a newer card has come.
  if (filled || turn !== asks) return;
  card = latest;
  const asked = (list) => JSON.stringify(list.map(({id, entries}) => [id, entries]));
  if (asked(next) !== asked(questions)) {
    questions = next;
    showQuestions();
  }
  if (form) showPlan();
}

async function undo(agent) {
  say(`Emptied ${counted(await undoFill(tab), "field")} again.`);
  filled = null;
  await look();
  await showAll(agent);
}

async function forgetChoice() {
  await forget(tab);
  say("The choice for this site is forgotten.");
  show("forget", false);
}

async function start() {
  tab = await currentTab();
  const agent = new Agent(() => showAll(agent).catch(fail));
  at("fill").addEventListener("submit", fill);
  at("undo").addEventListener("click", () => undo(agent).catch(fail));
  at("forget").addEventListener("click", () => forgetChoice().catch(fail));
  await look();
  const {state} = await showAll(agent);
  at("fill-button").focus();
  if (state !== "noProgram") await agent.watch();
}

function fail(failure) {
  say(`Something went wrong here: ${failure.message}`);
  document.body.removeAttribute("aria-busy");
}

await start().catch(fail);
