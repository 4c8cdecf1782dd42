#include "calibration/report/sections.h"

namespace calibration {

const char *reportStyle() {
    return R"(:root {
  color-scheme: light dark;
  --ink: #1b2430; --quiet: #576372; --line: #d9dfe7; --ground: #f3f5f8; --card: #ffffff; --paper: #fbfcfd;
  --accent: #0b5cad; --warm: #b4480f; --good: #17733c; --usable: #96620a; --poor: #b3261e; --bar: #4b86c2;
  --c0: #0b5cad; --c1: #b4480f; --c2: #17733c; --c3: #7a3fa0; --c4: #a3174f; --c5: #4f6b12;
}
@media (prefers-color-scheme: dark) {
  :root {
    --ink: #e4e9ef; --quiet: #9eabb9; --line: #38434f; --ground: #12171d; --card: #1b222a; --paper: #161c23;
    --accent: #6cb2f5; --warm: #f0955c; --good: #5fcf8a; --usable: #e8b04a; --poor: #ff8a80; --bar: #4b86c2;
    --c0: #6cb2f5; --c1: #f0955c; --c2: #5fcf8a; --c3: #c79bea; --c4: #f58bb4; --c5: #b7d26a;
  }
}
* { box-sizing: border-box; }
body { margin: 0; color: var(--ink); background: var(--ground);
  font: 16px/1.5 system-ui, "Segoe UI", "DejaVu Sans", Arial, sans-serif; }
main { max-width: 82rem; margin: 0 auto; padding: 1rem 1.25rem 3rem; }
h1 { font-size: 1.9rem; line-height: 1.2; margin: .8rem 0 1rem; overflow-wrap: anywhere; }
h2 { font-size: 1.3rem; line-height: 1.25; margin: 0 0 .7rem; overflow-wrap: anywhere; }
h3 { font-size: 1rem; margin: 1rem 0 .3rem; }
h4 { font-size: .95rem; margin: 0 0 .4rem; }
p { margin: .5rem 0; max-width: 54rem; }
section { background: var(--card); border: 1px solid var(--line); border-radius: 10px; padding: 1.1rem 1.25rem;
  margin: 1rem 0; }
.lead { font-size: 1.12rem; }
.verdict { display: flex; gap: 1.1rem; border-left: 8px solid var(--tone); }
.verdict h2 { color: var(--tone); font-size: 1.5rem; margin: .15rem 0 .3rem; }
.verdict ol { margin: .3rem 0 .3rem; padding-left: 1.3rem; max-width: 54rem; }
.sign { flex: none; width: 2.6rem; height: 2.6rem; border-radius: 50%; background: var(--tone); color: var(--card);
  font-size: 1.5rem; font-weight: 700; display: grid; place-items: center; line-height: 1; }
.good { --tone: var(--good); } .usable { --tone: var(--usable); } .poor { --tone: var(--poor); }
.tiles { display: grid; grid-template-columns: repeat(auto-fit, minmax(11rem, 1fr)); gap: .8rem; }
.tile { background: var(--card); border: 1px solid var(--line); border-radius: 10px; padding: .7rem .9rem;
  color: var(--quiet); }
.tile b { font-size: 1.45rem; font-weight: 650; color: var(--ink); white-space: nowrap; }
.tile span { display: block; font-size: .85rem; }
.notices ul { margin: 0; padding-left: 1.2rem; max-width: 54rem; }
.next { display: grid; grid-template-columns: 1fr minmax(0, 26rem); gap: 0 2rem; }
.next h2 { grid-column: 1 / -1; }
.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(15rem, 1fr)); gap: .5rem 1.5rem; margin: 0 0 1rem; }
.facts dt, .about dt { color: var(--quiet); font-size: .85rem; }
.facts dd { margin: 0; }
.about dt { margin-top: .6rem; font-weight: 600; }
.about dd { margin: 0; max-width: 54rem; }
.figures { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 23rem), 1fr)); gap: 1.3rem 1.5rem; }
.two { grid-template-columns: repeat(auto-fill, minmax(min(100%, 30rem), 1fr)); }
.tables { display: flex; flex-wrap: wrap; gap: 1rem 1.5rem; align-items: flex-start; grid-column: span 2; }
@media (max-width: 56rem) { .tables { grid-column: auto; } }
figure { margin: 0; min-width: 0; break-inside: avoid; }
figure.wide { margin-bottom: 1rem; }
figcaption { color: var(--quiet); font-size: .85rem; margin-top: .35rem; max-width: 46rem; }
svg { display: block; width: 100%; height: auto; max-height: 40rem; font-family: inherit; }
:where(svg path[class]) { fill: none; stroke: none; }
svg .paper { fill: var(--paper); }
svg .frame { stroke: var(--quiet); stroke-width: 1.2; }
svg .grid { stroke: var(--line); stroke-width: 1; }
svg .thin { stroke: var(--accent); stroke-width: 1; stroke-opacity: .75; }
svg .strong { stroke: var(--warm); stroke-width: 2; stroke-linecap: round; stroke-linejoin: round; }
svg .dots { fill: var(--quiet); }
svg .bar { fill: var(--bar); }
svg .cross { stroke: var(--poor); stroke-width: 2; }
svg .print { fill: var(--usable); fill-opacity: .3; stroke: var(--usable); stroke-width: 1.6; stroke-linejoin: round; }
svg .camera0, svg .camera1, svg .camera2, svg .camera3, svg .camera4, svg .camera5 {
  stroke: var(--c); stroke-width: 1.1; stroke-opacity: .8; stroke-linejoin: round; }
.camera0 { --c: var(--c0); } .camera1 { --c: var(--c1); } .camera2 { --c: var(--c2); }
.camera3 { --c: var(--c3); } .camera4 { --c: var(--c4); } .camera5 { --c: var(--c5); }
.key { color: var(--c); font-weight: 600; margin-right: 1rem; }
.key::before { content: "\25B2\00A0"; }
svg text { font-size: 15px; fill: var(--quiet); }
svg .value { fill: #111820; font-weight: 600; paint-order: stroke; stroke: #ffffff; stroke-width: 4px;
  stroke-linejoin: round; stroke-opacity: .85; }
.scroll { overflow-x: auto; }
table { border-collapse: collapse; font-size: .9rem; width: 100%; }
table.compact { width: auto; }
caption { text-align: left; font-weight: 600; padding-bottom: .3rem; max-width: 26rem; }
th, td { padding: .32rem .6rem; border-bottom: 1px solid var(--line); text-align: left; vertical-align: top; }
th { color: var(--quiet); font-weight: 600; white-space: nowrap; }
.n { text-align: right; white-space: nowrap; font-variant-numeric: tabular-nums; }
tr.out td { color: var(--poor); }
tr.chosen td { font-weight: 700; }
td img { display: block; max-width: 9rem; max-height: 6rem; }
small { color: var(--quiet); }
summary { cursor: pointer; font-weight: 600; margin: .4rem 0; }
@media (max-width: 48rem) {
  main { padding: .5rem .75rem 2rem; }
  section { padding: .9rem; }
  .next { grid-template-columns: 1fr; }
  .verdict { gap: .8rem; }
  .tile b { font-size: 1.2rem; }
  .tiles { grid-template-columns: repeat(2, 1fr); }
}
@media print {
  :root { --ink: #000; --quiet: #444; --line: #bbb; --ground: #fff; --card: #fff; --paper: #fff; --accent: #0b5cad;
    --warm: #b4480f; --good: #17733c; --usable: #96620a; --poor: #b3261e;
    --c0: #0b5cad; --c1: #b4480f; --c2: #17733c; --c3: #7a3fa0; --c4: #a3174f; --c5: #4f6b12; }
  body { font-size: 10pt; print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  main { max-width: none; padding: 0; }
  section { border-radius: 0; break-inside: auto; }
  .figures { grid-template-columns: 1fr 1fr; }
  h2, h4 { break-after: avoid; }
  tr { break-inside: avoid; }
  table { font-size: 8pt; }
  th { white-space: normal; }
}
)";
}

}  // namespace calibration
