// The entries of the context menu and the keyboard command: they fill at once where nothing has to be asked,
// and open the popup where something has.
import {Agent, api} from "./agent.js";
import {recall} from "./choices.js";
import {currentTab, fillForm, lookAtPage, undoFill} from "./page.js";
import {planFor, questionsFor} from "./plan.js";

const secondsOfBadge = 6;

async function say(tab, text, title) {
  await api.action.setBadgeBackgroundColor({color: "#1a7f5a", tabId: tab.id});
  await api.action.setBadgeText({text, tabId: tab.id});
  if (title) await api.action.setTitle({title, tabId: tab.id});
  setTimeout(async () => {
    try {
      await api.action.setBadgeText({text: "", tabId: tab.id});
      await api.action.setTitle({title: api.runtime.getManifest().action.default_title, tabId: tab.id});
    } catch {
      // The tab is closed.
    }
  }, secondsOfBadge * 1000);
}

// Where browsers do not let a program open the popup, the badge asks for a click on the button. Nobody is
// asked about a page that they have left.
async function askInPopup(tab) {
  const current = await api.tabs.get(tab.id).catch(() => null);
  if (!current?.active) return;
  try {
    await api.action.openPopup();
  } catch {
    await say(tab, "?", "quenlet has a question: press this button");
  }
}

async function fill(tab) {
  const agent = new Agent();
  try {
    const [{form}, card, remembered] = await Promise.all([lookAtPage(tab), agent.card(), recall(tab)]);
    const questions = await questionsFor(form, card, remembered);
    const mustAsk = !form || card.state === "noProgram" || questions.some((question) => !question.isRemembered);
    if (mustAsk) return await askInPopup(tab);
    const choices = Object.fromEntries(questions.map(({id, chosen}) => [id, chosen]));
    const outcomes = await fillForm(tab, form, planFor(form, card, choices).wishes);
    const filled = outcomes.filter(({outcome}) => outcome === "filled").length;
    if (filled === 0) return await askInPopup(tab);
    await say(tab, String(filled));
  } catch {
    await askInPopup(tab); // which says what is wrong
  } finally {
    agent.close();
  }
}

async function undo(tab) {
  const undone = await undoFill(tab).catch(() => 0);
  await say(tab, `−${undone}`);
}

api.runtime.onInstalled.addListener(() => {
  const contexts = ["editable", "frame", "page"];
  api.contextMenus.removeAll(() => {
    api.contextMenus.create({id: "fill", title: "Fill this form with your card", contexts});
    api.contextMenus.create({id: "undo", title: "Take back what was filled", contexts});
  });
});

api.contextMenus.onClicked.addListener((info, tab) => (info.menuItemId === "undo" ? undo(tab) : fill(tab)));
api.commands.onCommand.addListener(async (command, tab) => {
  if (command === "fill") await fill(tab ?? (await currentTab()));
});
