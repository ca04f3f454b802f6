// Finds the fields of a page that the card can fill, and what each of them wants. It reads the page and
// changes nothing. A plain script, which is injected into pages after words.js and sight.js.
{
  const words = globalThis.quenletWords;
  const {get, call, isVisible, isFrameOfPage} = globalThis.quenletSight;
  const mostFields = 2000;
  // A label that surrounds a page says nothing.
  const longestText = 200;
  const longestNearbyText = 60;

  // The autocomplete tokens that the card has something for.
  const tokens = new Set(["name", "honorific-prefix", "given-name", "additional-name", "family-name",
    "honorific-suffix", "nickname", "email", "tel", "tel-country-code", "tel-national", "tel-area-code",
    "tel-local", "tel-local-prefix", "tel-local-suffix", "tel-extension", "street-address", "address-line1",
    "address-line2", "address-line3", "address-level1", "address-level2", "address-level3", "postal-code",
    "country", "country-name", "photo"]);
  const contactHints = new Set(["home", "work", "mobile", "fax", "pager"]);
  const addressTokens = /^(street|address|postal|country|house)/;
  // They are the page's own texts, and reach the popup.
  const sectionName = /^section-[\w-]{1,30}$/;
  const mostGroups = 8;
  const textTypes = new Set(["text", "email", "tel", "search", "number"]);

  const normalized = (text) => text.normalize("NFKD").replace(/\p{M}/gu, "")
    .replace(/(\p{Ll})(\p{Lu}|\d)/gu, "$1 $2").toLowerCase()
    .replace(/[^\p{L}\p{N}]+/gu, " ").trim();
  const isJapanese = (word) => /[\p{Script=Han}\p{Script=Hiragana}\p{Script=Katakana}]/u.test(word);
  const listOf = (table) => Object.values(table).flat().map(normalized);
  const hasWord = (text, list) => list.some((word) =>
    isJapanese(word) && word.length > 1 ? text.includes(word) : ` ${text} `.includes(` ${word} `));

  const never = listOf(words.never);
  const neverInText = [...never, ...listOf(words.logins)];
  const besides = new Set([...listOf(words.besides), ...listOf(words.groups.shipping), ...listOf(words.groups.billing)]);
  const rows = words.fields.map(([token, table]) => [token, listOf(table)]);
  const listsOf = (tables) => Object.entries(tables).map(([name, table]) => [name, listOf(table)]);
  const groups = listsOf(words.groups);
  const hints = listsOf(words.hints);
  const prompts = listOf(words.prompts);

  const wordsFor = (token) => rows.find(([name]) => name === token)[1];
  const without = (text, list) => list.reduce((rest, word) => ` ${rest} `.replace(` ${word} `, " ").trim(), text);
  const alone = (text) => text.split(" ").filter((word) => !besides.has(word)).join(" ");

  // What several words in one text mean together, which may be another thing than the first of them.
  function joinedToken(token, text) {
    const rest = without(text, wordsFor(token));
    if (token === "name") {
      const hasGiven = hasWord(rest, wordsFor("given-name"));
      const hasFamily = hasWord(rest, wordsFor("family-name"));
      // "Recipient's first name", but not "name, surname".
      if (hasGiven !== hasFamily) return hasGiven ? "given-name" : "family-name";
    }
    if (token === "given-name" && hasWord(rest, wordsFor("family-name"))) return "name";
    // "Street and house number", but not "street number".
    if (token === "house-number" && hasWord(rest, wordsFor("street-address"))) return "street-address";
    return token;
  }

  // The token that a text of a page speaks of, or nothing.
  function tokenOfText(raw) {
    const text = normalized(raw);
    if (!text) return null;
    for (const [row, list] of rows) {
      const token = row.replace(" alone", "");
      if (token !== row ? list.includes(alone(text)) : hasWord(text, list)) return joinedToken(token, text);
    }
    return null;
  }

  const isForbidden = (text, list) => hasWord(normalized(text), list);

  // As tokenOfText(), nothing for texts that no field may have.
  const tokenOfField = (text) => (isForbidden(text, neverInText) ? null : tokenOfText(text));

  // {token, group, hint} of an autocomplete attribute; null when it says nothing of use, false when it
  // asks for something that is not on the card.
  function readAutocomplete(attribute) {
    const parts = attribute.toLowerCase().split(/\s+/).filter(Boolean);
    if (parts.at(-1) === "webauthn") parts.pop();
    if (parts.length === 0 || parts.at(-1) === "on" || parts.at(-1) === "off") return null;
    const token = parts.pop();
    const hint = contactHints.has(parts.at(-1)) ? parts.pop() : "";
    const group = parts.filter((part) => part === "shipping" || part === "billing" || sectionName.test(part));
    if (tokens.has(token)) return {token, hint, group: group.join(" ")};
    // Pages also write words of their own, which say nothing.
    const isStandard = /^(cc-|bday|sex$|organization|username$|(new|current)-password$|one-time-code$|transaction-|language$|url$|impp$)/;
    return isStandard.test(token) ? false : null;
  }

  // Without what stands in fields that the label surrounds.
  function ownText(label) {
    const texts = call(document, "createTreeWalker", label, NodeFilter.SHOW_TEXT);
    let text = "";
    while (text.length < longestText && texts.nextNode()) {
      const isOther = call(texts.currentNode.parentElement, "closest", "select, textarea, script, style");
      if (!isOther) text += `${texts.currentNode.data} `;
    }
    return text.slice(0, longestText);
  }

  function nearbyText(field) {
    const cell = field.closest("td, dd")?.previousElementSibling;
    const before = cell ?? field.previousElementSibling;
    if (!before || call(before, "matches", "input, select, textarea, form")) return "";
    const text = before.textContent.trim();
    return text.length <= longestNearbyText ? text : "";
  }

  // What says what the field is for, the most reliable first.
  function textsOf(field) {
    const root = field.getRootNode();
    const named = (field.getAttribute("aria-labelledby") ?? "").split(/\s+/).filter(Boolean)
      .map((id) => get(root, "getElementById")?.call(root, id)).filter(Boolean).map(ownText);
    const labels = [...(field.labels ?? [])].map(ownText);
    return [...labels, field.getAttribute("aria-label") ?? "", ...named, field.placeholder ?? "",
      field.name ?? "", field.id ?? "", field.title ?? "", labels.length > 0 ? "" : nearbyText(field)];
  }

  function groupByWords(field, texts) {
    const around = [];
    const sets = "fieldset, section, [role=group]";
    for (let set = field.closest(sets); set; set = set.parentElement?.closest(sets)) {
      const heading = set.querySelector("legend, h1, h2, h3, h4, h5, h6");
      around.push(heading?.textContent ?? "", set.getAttribute("aria-label") ?? "", set.id);
    }
    for (const text of [...texts, ...around].map(normalized)) {
      const found = groups.find(([, list]) => hasWord(text, list));
      if (found) return found[0];
    }
    return "";
  }

  // The kind of a field that can be filled at all, or null.
  function kindOf(field) {
    if (field.localName === "select") return field.multiple ? null : "select";
    if (field.localName === "textarea") return "textarea";
    if (field.localName !== "input") return null;
    if (field.type === "file") return "file";
    return textTypes.has(field.type) ? "input" : null;
  }

  const hintOf = (text) => hints.find(([, list]) => hasWord(normalized(text), list))?.[0] ?? "";

  // {token, group, hint}, or null for a field that the card cannot fill.
  function wishOf(field, kind) {
    const read = readAutocomplete(field.getAttribute("autocomplete") ?? "");
    if (read === false) return null;
    const texts = textsOf(field);
    if (read) return kind === "file" && read.token !== "photo" ? null : {...read, group: read.group || groupByWords(field, texts)};
    const group = groupByWords(field, texts);
    const isEmail = kind === "input" && field.type === "email";
    // One logs in with an e-mail address, too.
    if (texts.some((text) => isForbidden(text, isEmail ? never : neverInText))) return null;
    // Pages also take this type for the digits that its keyboard has.
    const isPhone = field.type === "tel" && !texts.some((text) => /\p{L}/u.test(text) && !hintOf(text));
    const telling = texts.find(tokenOfText) ?? texts.find(Boolean) ?? "";
    const token = isEmail ? "email" : tokenOfText(telling) ?? (isPhone ? "tel" : null);
    if (!token || (kind === "file") !== (token === "photo")) return null;
    return {token, hint: token === "email" || token === "tel" ? hintOf(telling) : "", group};
  }

  function hasContent(field, kind) {
    if (kind === "file") return field.files.length > 0;
    if (kind !== "select") return field.value.trim() !== "";
    // The first option is what a page that says nothing starts with.
    const option = field.selectedOptions[0];
    if (!option || option.value === "" || option.disabled) return false;
    if (field.selectedIndex !== 0) return true;
    const text = normalized(option.text);
    const isPrompt = /^\s*[-–—]/.test(option.text) || hasWord(text, prompts.filter((word) => text.startsWith(word)));
    return option.hasAttribute("selected") && !isPrompt;
  }

  const canChange = (field) => !field.disabled && !field.readOnly && !field.matches(":disabled");

  // Extensions also see those that pages closed.
  const shadowOf = (element) => get(element, "shadowRoot") ?? get(element, "openOrClosedShadowRoot") ??
    (element instanceof HTMLElement ? globalThis.chrome?.dom?.openOrClosedShadowRoot(element) : null);

  function* fieldsBelow(root) {
    for (const element of call(root, "querySelectorAll", "*")) {
      if (kindOf(element)) yield element;
      const shadow = shadowOf(element);
      if (shadow) yield* fieldsBelow(shadow);
    }
  }

  function formOf(field) {
    for (let node = field; node; node = get(node.getRootNode(), "host")) {
      const form = node.form ?? node.closest("form");
      if (form) return form;
    }
    return document;
  }

  // "name" beside one half of it is the other half; a street beside further lines is the first line.
  function settle(fields) {
    const byGroup = Map.groupBy(fields, (field) => field.group);
    for (const members of byGroup.values()) {
      const has = (token) => members.some((field) => field.token === token);
      const hasGiven = has("given-name");
      const hasFamily = has("family-name");
      const hasCity = has("address-level2");
      for (const field of members) {
        if (field.isSure) continue;
        if (field.token === "name" && hasGiven && !hasFamily) field.token = "family-name";
        if (field.token === "name" && hasFamily && !hasGiven) field.token = "given-name";
        if (field.token === "street-address" && has("address-line2")) field.token = "address-line1";
        if (field.token === "address-level3" && !hasCity) field.token = "address-level2";
        if (field.token === "tel" && has("tel-country-code")) field.token = "tel-national";
      }
    }
  }

  // A second surname, where people have two: the card does not know which is which.
  const isSecondSurname = (field, before) => field.token === "family-name" && before?.token === "family-name" &&
    before.group === field.group;

  // Fields that say nothing belong to the only address that the form names, unless they repeat it.
  function fold(fields) {
    const ofAddress = fields.filter((field) => addressTokens.test(field.token));
    const [name, ...others] = new Set(ofAddress.map((field) => field.group).filter(Boolean));
    if (!name || others.length > 0) return;
    const named = new Set(ofAddress.filter((field) => field.group).map((field) => field.token));
    const unnamed = ofAddress.filter((field) => !field.group);
    if (unnamed.some((field) => named.has(field.token))) return;
    for (const field of unnamed) field.group = name;
  }

  // A second address begins where fields repeat, and among them the street or the postcode.
  function separate(fields) {
    const ofAddress = fields.filter((field) => addressTokens.test(field.token) && !field.isSure);
    for (const members of Map.groupBy(ofAddress, (field) => field.group).values()) {
      const seen = new Set();
      let number = 1;
      for (const [place, field] of members.entries()) {
        const repeats = ({token}) => /^(street|postal)/.test(token) && seen.has(token);
        if (seen.has(field.token) && members.slice(place).some(repeats)) {
          number += 1;
          seen.clear();
        }
        seen.add(field.token);
        if (number > 1) field.group = `${field.group} ${number}`.trim();
      }
    }
  }

  function arrange(fields) {
    for (const [place, field] of fields.entries()) {
      if (field.token === "country code") field.token = fields[place + 1]?.token === "tel" ? "tel-country-code" : "country";
    }
    fold(fields);
    separate(fields);
    settle(fields);
    const groupNames = [...new Set(fields.map((field) => field.group))].slice(0, mostGroups);
    return fields.filter((field, place) => groupNames.includes(field.group) && !isSecondSurname(field, fields[place - 1]));
  }

  function deepActiveElement(root) {
    const element = get(root, "activeElement");
    const shadow = element && shadowOf(element);
    return shadow?.activeElement ? deepActiveElement(shadow) : element;
  }

  function focusedElement() {
    // The document of a frame keeps its own when the focus leaves the frame.
    for (let frame = window; frame !== top; frame = frame.parent) {
      if (deepActiveElement(frame.parent.document) !== frame.frameElement) return null;
    }
    return deepActiveElement(document);
  }

  // A frame in a form has forms of its own.
  const isInForm = (focused, form) => focused !== null && form !== document &&
    !call(focused, "matches", "iframe, frame") && formOf(focused) === form;

  // The forms of this document, each with its fields in their order. `index` names a field to
  // quenletFill() until the next search.
  function find() {
    const isFilled = (globalThis.quenletFilled ?? []).length > 0;
    const found = {language: get(document, "documentElement").lang, isFilled, forms: []};
    globalThis.quenletFields = [];
    if (!isFrameOfPage()) return found;
    const focused = focusedElement();
    const byForm = new Map();
    let looked = 0;
    for (const element of fieldsBelow(document)) {
      if (++looked > mostFields) break;
      const kind = kindOf(element);
      if (!canChange(element) || !isVisible(element)) continue;
      const wish = wishOf(element, kind);
      if (!wish) continue;
      const isSure = (element.getAttribute("autocomplete") ?? "").includes(wish.token);
      const field = {...wish, kind, isSure, hasContent: hasContent(element, kind), index: globalThis.quenletFields.length};
      globalThis.quenletFields.push(element);
      const form = formOf(element);
      if (!byForm.has(form)) byForm.set(form, {hasFocus: isInForm(focused, form), fields: []});
      byForm.get(form).fields.push(field);
      if (element === focused) byForm.get(form).hasFocus = true;
    }
    for (const form of byForm.values()) {
      form.fields = arrange(form.fields);
      found.forms.push(form);
    }
    return found;
  }

  globalThis.quenletFind = {find, hasContent, kindOf, canChange, tokenOfField};
}
