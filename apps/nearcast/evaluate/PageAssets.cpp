// SPDX-License-Identifier: Apache-2.0
#include "evaluate/PageAssets.h"

namespace nearcast::cli {

const std::string_view pageStyle = R"css(
:root { color-scheme: light dark; --ink: #1c2430; --paper: #fcfcfb; --faint: #5c6675; --rule: #dde1e6;
  --main: #0b62c4; --other: #8a5a00; --tip: #1c2430; --on-tip: #fff; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e6e9ee; --paper: #14181e; --faint: #a3acb9; --rule: #333b46; --main: #6db3ff; --other: #e2b04a;
    --tip: #e6e9ee; --on-tip: #14181e; }
}
body { font: 15px/1.5 system-ui, sans-serif; color: var(--ink); background: var(--paper); margin: 0 auto;
  padding: 1rem 1.25rem 3rem; max-width: 75rem; }
h1 { font-size: 1.5rem; margin: .5rem 0 0; }
h2 { font-size: 1.1rem; margin: 2rem 0 .5rem; }
.charts { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 28rem), 1fr)); gap: 1rem 2rem; }
figure { margin: 1rem 0; }
figcaption { font-weight: 600; }
svg { width: 100%; height: auto; overflow: visible; }
svg text { font-size: 11px; fill: var(--faint); }
svg text.name { fill: var(--other); }
svg text.main { fill: var(--main); font-weight: 600; }
.grid { stroke: var(--rule); }
.curve { fill: none; stroke: var(--other); stroke-width: 1.5; }
.curve.main { stroke: var(--main); }
.mark { fill: var(--other); stroke: var(--paper); stroke-width: 1.5; cursor: pointer; }
.mark.main { fill: var(--main); }
.mark:focus-visible { outline: 2px solid var(--ink); outline-offset: 2px; }
.wide { overflow-x: auto; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: .2rem .75rem; text-align: right; border-bottom: 1px solid var(--rule); white-space: nowrap; }
th { color: var(--faint); font-weight: 600; }
th:first-child, td:first-child { text-align: left; padding-left: 0; }
tr.main td { color: var(--main); font-weight: 600; }
summary { cursor: pointer; padding: .25rem 0; overflow-wrap: anywhere; }
#tip { position: fixed; max-width: 20rem; padding: .35rem .6rem; border-radius: .35rem; background: var(--tip);
  color: var(--on-tip); font-size: 13px; pointer-events: none; }
)css";

const std::string_view pageScript = R"js(
"use strict";
const tip = document.getElementById("tip");
function show(mark) {
  tip.textContent = mark.getAttribute("aria-label");
  tip.hidden = false;
  const place = mark.getBoundingClientRect();
  const left = Math.min(place.right + 8, document.documentElement.clientWidth - tip.offsetWidth - 8);
  const below = place.bottom + 8;
  const fits = below + tip.offsetHeight < document.documentElement.clientHeight;
  tip.style.left = Math.max(left, 8) + "px";
  tip.style.top = (fits ? below : place.top - tip.offsetHeight - 8) + "px";
}
function hide() { tip.hidden = true; }
for (const mark of document.querySelectorAll(".mark")) {
  // Where the script runs, its tip takes the place of the browser's own, which comes late and never on a touch.
  mark.querySelector("title").remove();
  mark.addEventListener("pointerenter", () => show(mark));
  mark.addEventListener("pointerleave", hide);
  mark.addEventListener("focus", () => show(mark));
  mark.addEventListener("blur", hide);
}
addEventListener("keydown", event => { if (event.key === "Escape") hide(); });
addEventListener("scroll", hide, { passive: true });
)js";

}  // namespace nearcast::cli
