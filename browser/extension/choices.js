// Which of several entries the owner wants on a site, until told otherwise: {"address billing": key}. The
// entries' texts are not kept.
import {api} from "./agent.js";

const mostChoices = 32;

// The page's own address is readable only after the click. Null where nothing is kept.
export function siteOf(tab) {
  if (tab.incognito || !tab.url) return null;
  const {origin} = new URL(tab.url);
  return origin === "null" ? null : `site ${origin}`;
}

export async function recall(tab) {
  const site = siteOf(tab);
  return site ? (await api.storage.local.get(site))[site] ?? {} : {};
}

export async function remember(tab, choices) {
  const site = siteOf(tab);
  if (!site || Object.keys(choices).length === 0) return;
  const all = Object.entries({...(await recall(tab)), ...choices});
  // Groups are the page's own words, which it may change as it likes.
  await api.storage.local.set({[site]: Object.fromEntries(all.slice(-mostChoices))});
}

export async function forget(tab) {
  const site = siteOf(tab);
  if (site) await api.storage.local.remove(site);
}
