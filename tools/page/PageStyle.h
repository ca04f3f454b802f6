#pragma once

#include "tools/page/HTMLWriter.h"

namespace quenlet {

// The style sheet of the page. Each text colour has a contrast of at least 4.5 to 1 with the
// backgrounds on which it stands.
inline constexpr HTMLLiteral pageStyle(R"css(
:root {
  color-scheme: light dark;
  --paper: #f4f3ef;
  --card: #ffffff;
  --ink: #1c1e22;
  --muted: #5b5f67;
  --line: #e2e0d9;
  --accent: #2c6152;
  --tint: #e6efeb;
  --warning: #8a4a00;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #131417;
    --card: #1c1e22;
    --ink: #ececee;
    --muted: #a4a8b1;
    --line: #30333a;
    --accent: #8ccab5;
    --tint: #22332e;
    --warning: #ecba75;
  }
}
* { box-sizing: border-box; margin: 0; }
html { background: var(--paper); color: var(--ink); font: 1rem/1.5 system-ui, sans-serif; }
body { max-width: 56rem; margin: 0 auto; padding: 3rem 1.5rem; }
bdi, code { overflow-wrap: anywhere; }
header { display: flex; flex-wrap: wrap; justify-content: space-between; align-items: baseline;
  gap: 0 2rem; margin: 0 0.25rem 1.25rem; }
h1 { font-size: 1rem; font-weight: 600; }
h2 { font-size: 1.25rem; font-weight: 600; letter-spacing: -0.01em; line-height: 1.3; }
h3 { font-size: 0.875rem; font-weight: 500; color: var(--muted); }
ul { list-style: none; padding: 0; }
a { color: inherit; }
code { font: 0.9375em ui-monospace, monospace; }
.note, footer { color: var(--muted); font-size: 0.875rem; }
.warning { color: var(--warning); font-weight: 600; }
main > .warning { margin-bottom: 1rem; }
main > section { margin-top: 3rem; }
main > section > h2 + .note { margin: 0.25rem 0 0.75rem; }
footer { margin-top: 3.5rem; padding-top: 1rem; border-top: 1px solid var(--line); }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 3px; border-radius: 4px; }

.card { background: var(--card); border: 1px solid var(--line); border-radius: 1.25rem;
  padding: 2.5rem; box-shadow: 0 1px 2px rgb(0 0 0 / 4%), 0 12px 32px rgb(0 0 0 / 6%); }
.card h2 { font-size: 2rem; letter-spacing: -0.02em; line-height: 1.2; }
.head { display: flex; align-items: center; gap: 1.75rem; }
.portrait { flex: none; display: grid; place-items: center; width: 7rem; height: 7rem;
  border-radius: 50%; overflow: hidden; background: var(--tint); color: var(--accent);
  font-size: 2.25rem; font-weight: 500; letter-spacing: 0.02em; }
.portrait img { width: 100%; height: 100%; object-fit: cover; }
.nickname { color: var(--muted); font-size: 1.125rem; }
.head .nickname + .from, .head h2 + .from { margin-top: 0.375rem; }
.from { color: var(--muted); font-size: 0.875rem; }
.kind { display: grid; grid-template-columns: 6rem 1fr; margin-top: 1.75rem; padding-top: 1.75rem;
  border-top: 1px solid var(--line); }
.kind h3 { padding-top: 0.1875rem; }
.kind + .kind { margin-top: 1.5rem; }
.values li { position: relative; padding-left: 1.25rem; display: grid;
  grid-template-columns: 1fr 1fr; gap: 0 1.5rem; align-items: baseline; }
.values li + li, .kind details li { margin-top: 0.75rem; }
.values li::before { content: ""; position: absolute; left: 0; top: 0.5rem; width: 0.5rem;
  height: 0.5rem; border-radius: 50%; border: 1.5px solid var(--accent); }
.values li.own::before { background: var(--accent); }
.values .value { font-size: 1.0625rem; }
.label { border-radius: 0.375rem; background: var(--tint); color: var(--accent);
  padding: 0.0625rem 0.4375rem; margin-right: 0.25rem; font-size: 0.8125rem; }

nav ul { display: flex; flex-wrap: wrap; gap: 0.5rem 2rem; margin: 1.5rem 0.25rem 0; }
nav a { text-decoration: none; color: var(--muted); }
nav a:hover { text-decoration: underline; }
nav strong { color: var(--ink); font-size: 1.25rem; font-weight: 600; margin-right: 0.125rem; }

details { margin-top: 0.5rem; }
summary { cursor: pointer; padding: 0.375rem 0; font-weight: 500; }
.kind summary { color: var(--accent); margin-top: 0.5rem; }
table { width: 100%; border-collapse: collapse; font-size: 0.9375rem; }
caption { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
th, td { text-align: start; vertical-align: baseline; padding: 0.5rem 1rem 0.5rem 0;
  border-bottom: 1px solid var(--line); }
th:last-child, td:last-child { padding-right: 0; }
tbody tr:last-child > * { border-bottom: 0; }
thead th { color: var(--muted); font-size: 0.8125rem; font-weight: 500; }
tbody th { font-weight: 500; }
.number { font-variant-numeric: tabular-nums; color: var(--muted); width: 3.5rem; }
.until, .number, thead th { white-space: nowrap; }
.donations .donor { width: 40%; }
.reasons .value { width: 34%; }
.reasons .donor { width: 26%; }
.reasons td:last-child, .what { color: var(--muted); }
.timeline tbody th, .donors time { white-space: nowrap; }
.bars { width: 30%; }
.bar { display: block; width: 100%; height: 0.5rem; fill: var(--accent); }

@media (max-width: 40rem) {
  body { padding: 1.5rem 1rem; }
  .card { padding: 1.5rem; }
  .card h2 { font-size: 1.5rem; }
  .portrait { width: 4.5rem; height: 4.5rem; font-size: 1.5rem; }
  .head { gap: 1rem; }
  .kind, .values li { grid-template-columns: 1fr; }
  .kind { gap: 0.75rem; }
  .what { display: none; }
}
@media print {
  @page { margin: 8mm 12mm; }
  :root { color-scheme: light; --paper: #ffffff; --card: #ffffff; --ink: #000000; --muted: #444444;
    --line: #cccccc; --accent: #2c6152; --tint: #ffffff; --warning: #000000; }
  html { font-size: 7.5pt; line-height: 1.25; }
  body { max-width: none; padding: 0; print-color-adjust: exact; }
  header { margin-bottom: 0.75rem; }
  .card { box-shadow: none; padding: 1rem 1.5rem; }
  .portrait { width: 5rem; height: 5rem; border: 1px solid var(--line); }
  .kind { margin-top: 0.75rem; padding-top: 0.75rem; }
  .kind + .kind { margin-top: 0.5rem; }
  .kind { grid-template-columns: 4.5rem 1fr; }
  .values { columns: 2; column-gap: 1rem; }
  .values li { grid-template-columns: 1fr; margin-bottom: 0.375rem; break-inside: avoid; }
  .values li + li, .kind details li { margin-top: 0; }
  details { margin-top: 0.25rem; }
  nav, footer, .advice, details thead { display: none; }
  summary { list-style: none; padding: 0.125rem 0; }
  main > section { margin-top: 0.75rem; }
  .card h2 { font-size: 1.5rem; }
  main > section > h2 + .note { margin: 0 0 0.25rem; }
  th, td { padding-top: 0.0625rem; padding-bottom: 0.0625rem; }
  tr { break-inside: avoid; }
  .reasons .value { width: 30%; }
  .reasons .donor { width: 20%; }
  .bars { width: 15%; }
}
)css");

}  // namespace quenlet
