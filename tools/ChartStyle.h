#pragma once

namespace tool {

/// Colours of a chart, light and dark, as CSS variables; of picture and page alike.
constexpr const char* kChartColours = R"css(
:root{color-scheme:light dark;--bg:#fbfaf8;--card:#ffffff;--ink:#1f2328;--soft:#6a707a;--line:#e3e1dc;
--movie:#c9d6f7;--fragment:#bfe3dc;--media:#ecebe6;--table:#dccff5;--index:#e8dfc3;
--protection:#f8b4c8;--space:#f4f3ef;--other:#dfe2e6;--boxline:#ffffff;--boxink:#1f2328;--badge:#ffffff;
--clear:#2f8f5b;--protected:#cf2f62;--undetermined:#b7791f;--warn:#e07b00;
--t0:#3f7fd0;--t1:#e08a2e;--t2:#3fa06b;--t3:#9a62c7;--t4:#2aa3b5;--t5:#8a7a5c}
@media (prefers-color-scheme:dark){:root{--bg:#14161a;--card:#1b1e24;--ink:#e8e6e1;--soft:#9aa1ac;
--line:#2e323a;--movie:#344a7d;--fragment:#245b54;--media:#2b2e35;--table:#4a3a73;--index:#574b25;
--protection:#8d2c4d;--space:#20232a;--other:#3a3f48;--boxline:#14161a;--boxink:#f0eee9;--badge:#14161a;
--clear:#4cc283;--protected:#ff6b95;--undetermined:#e0a94a;--warn:#ffa033;
--t0:#6aa5ee;--t1:#f0a65a;--t2:#62c68f;--t3:#bb8ce2;--t4:#4fc4d4;--t5:#b5a588}}
)css";

}  // namespace tool
