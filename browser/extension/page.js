// The page in front of the owner. All of this needs the click that lets the extension into the page.
import {api} from "./agent.js";
import {formInFront} from "./plan.js";

const files = ["words.js", "sight.js", "fields.js", "filler.js"];

export async function currentTab() {
  const [tab] = await api.tabs.query({active: true, currentWindow: true});
  return tab;
}

// {form, isFilled}: the form in front of the owner, null on a page without one, and whether undoFill() has
// something to take back. Fails where extensions may not look.
export async function lookAtPage(tab) {
  const target = {tabId: tab.id, allFrames: true};
  await api.scripting.executeScript({target, files});
  const frames = await api.scripting.executeScript({target, func: () => globalThis.quenletFind.find()});
  return {form: formInFront(frames), isFilled: frames.some(({result}) => result?.isFilled)};
}

// [{index, outcome, shown}], see filler.js. Only what the wishes say reaches the page. What is in the fields of
// `former` wishes is taken back before.
export async function fillForm(tab, form, wishes, former = []) {
  const [{result}] = await api.scripting.executeScript({
    target: {tabId: tab.id, frameIds: [form.frameId]},
    func: (given, indices) => {
      globalThis.quenletFill.undo(indices);
      return globalThis.quenletFill.fill(given);
    },
    args: [wishes, former.map(({index}) => index)],
  });
  return result ?? [];
}

// The number of fields that were emptied again.
export async function undoFill(tab) {
  const done = await api.scripting.executeScript({
    target: {tabId: tab.id, allFrames: true},
    func: () => globalThis.quenletFill?.undo() ?? 0,
  });
  return done.reduce((sum, {result}) => sum + (result ?? 0), 0);
}
