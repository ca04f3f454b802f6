// Puts texts into the fields that fields.js found, and takes them out again. A plain script, which is
// injected into pages after the owner's click; it holds no value that it was not told to fill in.
{
  const markStyle = "2px solid #1a7f5a";
  const settlingMilliseconds = 60;

  const plain = (text) => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase().replace(/[\s.]+/g, " ").trim();

  // Pages listen to these, in this order, when a person types and leaves.
  function tell(field, kind) {
    const bubbling = {bubbles: true, composed: true};
    if (kind !== "file") field.dispatchEvent(new KeyboardEvent("keydown", {...bubbling, key: "Unidentified"}));
    field.dispatchEvent(new InputEvent("input", {...bubbling, inputType: "insertReplacementText"}));
    if (kind !== "file") field.dispatchEvent(new KeyboardEvent("keyup", {...bubbling, key: "Unidentified"}));
    field.dispatchEvent(new Event("change", bubbling));
    field.dispatchEvent(new FocusEvent("blur", {composed: true}));
    field.dispatchEvent(new FocusEvent("focusout", bubbling));
  }

  // Whether the field would take the text as it is.
  function fits(field, text) {
    if (field.maxLength >= 0 && text.length > field.maxLength) return false;
    if (field.type === "number" && !/^\d+$/.test(text)) return false;
    if (field.localName === "input" && text.includes("\n")) return false;
    if (!field.pattern) return true;
    try {
      return new RegExp(`^(?:${field.pattern})$`, "v").test(text);
    } catch {
      return true; // browsers ignore such a pattern, too
    }
  }

  // "US United States (+1)" also names "US", "United States" and "+1".
  function partsOf(text) {
    return text.split(/[()[\]/|;:]|\s[–—-]\s/).map((part) => part.trim()).flatMap((part) => {
      const [, before, name = part, after] = /^(\+\d+ |[A-Z]{2,3} )?(.+?)( \+\d+| [A-Z]{2,3})?$/.exec(part) ?? [];
      return [part, before?.trim(), name, after?.trim()].filter(Boolean);
    });
  }

  // The one option that a candidate names: by value, then by name, then by a part of its name.
  function optionFor(select, candidates) {
    const options = [...select.options].filter((option) => !option.disabled && option.value !== "");
    const only = (list) => (new Set(list.map((option) => option.value)).size === 1 ? list[0] : null);
    const exact = (text) => only(options.filter((option) => plain(option.value) === plain(text))) ??
      only(options.filter((option) => plain(option.label) === plain(text) || plain(option.text) === plain(text)));
    // Options may be numbered: digits alone come last.
    const isNumber = (text) => /^\d+$/.test(text);
    for (const text of candidates.filter((each) => !isNumber(each))) {
      const option = exact(text);
      if (option) return option;
    }
    const byPart = (text) => options.filter((option) => partsOf(option.text)
      // Two letters are words of many languages; a code is in capitals.
      .some((part) => (text.length <= 3 ? part === text : plain(part) === plain(text))));
    for (const text of candidates) {
      const found = byPart(text);
      if (found.length > 1) {
        // "+1" of several countries: another candidate may name one of them.
        const narrowed = found.filter((option) => candidates.some((other) => other !== text && byPart(other).includes(option)));
        if (only(narrowed)) return narrowed[0];
      } else if (only(found)) {
        return found[0];
      }
    }
    return candidates.filter(isNumber).map(exact).find(Boolean) ?? null;
  }

  function fileOf({type, bytes}) {
    const data = Uint8Array.from(atob(bytes), (character) => character.charCodeAt(0));
    return new File([data], `photo.${type.split("/")[1].replace("jpeg", "jpg")}`, {type});
  }

  function acceptsType(field, type) {
    const accepted = field.accept.split(",").map((part) => part.trim().toLowerCase()).filter(Boolean);
    if (accepted.length === 0) return true;
    const ending = `.${type.split("/")[1]}`;
    return accepted.some((part) => part === type || part === "image/*" || part === "*/*" || part === ending ||
      (part === ".jpg" && ending === ".jpeg"));
  }

  // Returns what has become of the field: {outcome: "filled", shown}, or why not.
  function put(field, kind, wanted) {
    let shown;
    if (kind === "file") {
      if (!wanted.picture || !acceptsType(field, wanted.picture.type)) return {outcome: "doesNotFit"};
      const transfer = new DataTransfer();
      transfer.items.add(fileOf(wanted.picture));
      field.files = transfer.files;
      shown = transfer.files[0].name;
    } else if (kind === "select") {
      const option = optionFor(field, wanted.candidates);
      if (!option) return {outcome: "noSuchChoice"};
      field.selectedIndex = option.index;
      shown = option.text;
    } else {
      const text = wanted.candidates.find((candidate) => fits(field, candidate));
      if (text === undefined) return {outcome: "doesNotFit"};
      field.value = text;
      shown = text;
    }
    tell(field, kind);
    return {outcome: "filled", shown};
  }

  const filledSoFar = () => globalThis.quenletFilled ?? [];
  const stateOf = (field, kind) => kind === "file" ? String(field.files.length) : kind === "select" ? field.selectedIndex : field.value;

  function mark(field) {
    const former = [field.style.getPropertyValue("outline"), field.style.getPropertyPriority("outline")];
    field.style.setProperty("outline", markStyle, "important");
    const unmark = () => field.style.setProperty("outline", ...former);
    const hand = new AbortController();
    field.addEventListener("input", (event) => {
      if (!event.isTrusted) return;
      unmark();
      hand.abort();
    }, {signal: hand.signal});
    return unmark;
  }

  // `wishes`: [{index, candidates} or {index, picture}]. Resolves to [{index, outcome, shown}], where
  // `shown` is what a field was filled with.
  async function fill(wishes) {
    const {hasContent, kindOf, canChange} = globalThis.quenletFind;
    const done = [];
    const results = [];
    for (const wanted of wishes) {
      const field = globalThis.quenletFields[wanted.index];
      const kind = field && kindOf(field);
      // The page may have changed since it was looked at.
      const isStillOpen = kind && canChange(field) && globalThis.quenletSight.isVisible(field) && !hasContent(field, kind);
      if (!isStillOpen) {
        results.push({index: wanted.index, outcome: "gone"});
        continue;
      }
      const before = stateOf(field, kind);
      const result = {index: wanted.index, ...put(field, kind, wanted)};
      results.push(result);
      if (result.outcome === "filled") done.push({field, kind, before, after: stateOf(field, kind), result});
    }
    const filled = [...filledSoFar().filter(({field}) => !done.some((entry) => entry.field === field)), ...done];
    globalThis.quenletFilled = filled;
    await new Promise((resolve) => setTimeout(resolve, settlingMilliseconds));
    if (globalThis.quenletFilled !== filled) return results; // taken back already
    for (const entry of done) {
      // A page may write what came in its own way, or throw it out.
      entry.after = stateOf(entry.field, entry.kind);
      if (entry.after === entry.before) entry.result.outcome = "refused";
      else entry.unmark = mark(entry.field);
    }
    globalThis.quenletFilled = filled.filter((entry) => entry.result.outcome === "filled");
    return results;
  }

  // Takes back what was filled where nobody has changed it since, all or only the fields of these indices.
  // Returns the number of fields.
  function undo(indices) {
    const isMeant = ({field}) => !indices || indices.some((index) => globalThis.quenletFields[index] === field);
    let undone = 0;
    for (const {field, kind, before, after, unmark} of filledSoFar().filter(isMeant)) {
      unmark?.();
      if (stateOf(field, kind) !== after) continue;
      if (kind === "file") field.value = "";
      else if (kind === "select") field.selectedIndex = before;
      else field.value = before;
      tell(field, kind);
      undone += 1;
    }
    globalThis.quenletFilled = filledSoFar().filter((entry) => !isMeant(entry));
    return undone;
  }

  globalThis.quenletFill = {fill, undo};
}
