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

  // The one option that a candidate names: by value, then by name, then by a word of its name.
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
    const byWord = (text) => options.filter((option) => {
      const label = ` ${option.text.replace(/[()[\],;:/–—-]/g, " ").replace(/\s+/g, " ")} `;
      // Two letters are words of many languages; a code is in capitals.
      return text.length <= 3 ? label.includes(` ${text} `) : plain(label).includes(plain(text));
    });
    for (const text of candidates) {
      const found = byWord(text);
      if (found.length > 1) {
        // "+1" of several countries: another candidate may name one of them.
        const narrowed = found.filter((option) => candidates.some((other) => other !== text && byWord(other).includes(option)));
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

  // Returns what has become of the field: "filled", or why not.
  function put(field, kind, wanted) {
    if (kind === "file") {
      if (!wanted.picture || !acceptsType(field, wanted.picture.type)) return "doesNotFit";
      const transfer = new DataTransfer();
      transfer.items.add(fileOf(wanted.picture));
      field.files = transfer.files;
    } else if (kind === "select") {
      const option = optionFor(field, wanted.candidates);
      if (!option) return "noSuchChoice";
      field.selectedIndex = option.index;
    } else {
      const text = wanted.candidates.find((candidate) => fits(field, candidate));
      if (text === undefined) return "doesNotFit";
      field.value = text;
    }
    tell(field, kind);
    return "filled";
  }

  const stateOf = (field, kind) => kind === "file" ? String(field.files.length) : kind === "select" ? field.selectedIndex : field.value;

  function mark(field) {
    const former = [field.style.getPropertyValue("outline"), field.style.getPropertyPriority("outline")];
    field.style.setProperty("outline", markStyle, "important");
    const unmark = () => field.style.setProperty("outline", ...former);
    field.addEventListener("input", (event) => event.isTrusted && unmark(), {once: true});
    return unmark;
  }

  // `wishes`: [{index, candidates} or {index, picture}]. Resolves to [{index, outcome}].
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
      const outcome = put(field, kind, wanted);
      results.push({index: wanted.index, outcome});
      if (outcome === "filled") done.push({field, kind, before, after: stateOf(field, kind), result: results.at(-1)});
    }
    globalThis.quenletLastFill = done;
    await new Promise((resolve) => setTimeout(resolve, settlingMilliseconds));
    if (globalThis.quenletLastFill !== done) return results; // taken back already
    for (const entry of done) {
      // A page may write what came in its own way, or throw it out.
      entry.after = stateOf(entry.field, entry.kind);
      if (entry.after === entry.before) entry.result.outcome = "refused";
      else entry.unmark = mark(entry.field);
    }
    globalThis.quenletLastFill = done.filter((entry) => entry.result.outcome === "filled");
    return results;
  }

  // Takes the last fill back where nobody has changed it since. Returns the number of fields.
  function undo() {
    let undone = 0;
    for (const {field, kind, before, after, unmark} of globalThis.quenletLastFill ?? []) {
      unmark?.();
      if (stateOf(field, kind) !== after) continue;
      if (kind === "file") field.value = "";
      else if (kind === "select") field.selectedIndex = before;
      else field.value = before;
      tell(field, kind);
      undone += 1;
    }
    globalThis.quenletLastFill = [];
    return undone;
  }

  globalThis.quenletFill = {fill, undo};
}
