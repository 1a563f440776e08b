// Decorative displays, which show at a glance whether a panel is a PFD or an MFD. What lies behind the figures is far
// larger than the drawing, since the displays have many shapes.

const skyAndTapes = `<svg viewBox="0 0 400 320" preserveAspectRatio="xMidYMid meet" aria-hidden="true">
  <defs><linearGradient id="sky" gradientUnits="userSpaceOnUse" x1="0" y1="-100" x2="0" y2="170"><stop offset="0" stop-color="#0f4f96"/><stop offset="1" stop-color="#63aae0"/></linearGradient>
  <linearGradient id="ground" gradientUnits="userSpaceOnUse" x1="0" y1="170" x2="0" y2="490"><stop offset="0" stop-color="#8f6238"/><stop offset="1" stop-color="#472d14"/></linearGradient></defs>
  <g transform="translate(200 136) scale(.92) translate(-200 -162)">
  <g transform="rotate(-5 200 160)"><rect x="-1000" y="-1000" width="2400" height="1170" fill="url(#sky)"/><rect x="-1000" y="170" width="2400" height="1200" fill="url(#ground)"/>
  <path d="M-1000 170h2400" stroke="#fff" stroke-width="2"/>
  <g stroke="#fff" stroke-width="1.6" opacity=".9"><path d="M172 145h56M184 132h32M156 120h88M184 107h32M172 94h56M184 183h32M172 195h56M184 208h32M156 220h88"/></g></g>
  <path d="M98 104a112 112 0 0 1 204 0" fill="none" stroke="#fff" stroke-width="2" opacity=".85"/>
  <path d="M200 40l-7-12h14zM200 46l-7 12h14z" fill="#fff"/><path d="M144 67l-5-9M256 67l5-9M118 88l-8-6M282 88l8-6" stroke="#fff" stroke-width="2"/>
  <path d="M116 162h44v8M284 162h-44v8" fill="none" stroke="#ffd24a" stroke-width="5"/><path d="M200 162l-26 18 26-8 26 8z" fill="#ffd24a"/>
  <g font-family="ui-monospace,DejaVu Sans Mono,monospace" font-size="13" fill="#fff">
  <rect x="22" y="58" width="56" height="206" fill="#0b0f14" opacity=".6"/><rect x="318" y="58" width="64" height="206" fill="#0b0f14" opacity=".6"/>
  <path d="M78 80h-9M78 107h-9M78 134h-9M78 188h-9M78 215h-9M78 242h-9M318 80h9M318 107h9M318 134h9M318 188h9M318 215h9M318 242h9" stroke="#fff"/>
  <path d="M78 188v54" stroke="#58e07c" stroke-width="4"/>
  <g text-anchor="end"><text x="64" y="85">140</text><text x="64" y="112">130</text><text x="64" y="220">100</text><text x="64" y="247">90</text>
  <text x="374" y="85">5800</text><text x="374" y="112">5700</text><text x="374" y="220">5300</text><text x="374" y="247">5200</text></g>
  <path d="M20 145h54l9 16-9 16h-54z" fill="#05070a" stroke="#fff"/><text x="68" y="167" text-anchor="end" font-size="18">118</text>
  <path d="M386 145h-64l-9 16 9 16h64z" fill="#05070a" stroke="#fff"/><text x="380" y="167" text-anchor="end" font-size="18">5500</text>
  <text x="350" y="281" text-anchor="middle" fill="#41d6e8" font-size="12">29.92IN</text><text x="50" y="281" text-anchor="middle" fill="#e45bf0" font-size="12">TAS 131</text></g>
  </g><g transform="translate(200 268) scale(.66)"><circle r="76" fill="#0b0f14" opacity=".66"/><circle r="76" fill="none" stroke="#fff" opacity=".6"/>
  <g stroke="#fff" stroke-width="2"><path d="M0-76v13M38-66l-6 11M66-38l-11 6M76 0h-13M-38-66l6 11M-66-38l11 6M-76 0h13"/></g>
  <g font-family="ui-monospace,DejaVu Sans Mono,monospace" font-size="13" fill="#fff" text-anchor="middle"><text y="-48">3</text><text x="38" y="-26">6</text><text x="54" y="10">E</text><text x="-38" y="-26">N</text><text x="-54" y="10">33</text></g>
  <path d="M0 60v-84M0-36l-7 13h14z" stroke="#e45bf0" stroke-width="3.5" fill="#e45bf0"/><path d="M-6-87h12l-6 10z" fill="#fff"/><path d="M24-76l10 4-4 9-10-4z" fill="#41d6e8"/>
  <path d="M0-6l3 7 11 5v3l-11-2-1 8 4 3v2l-6-1-6 1v-2l4-3-1-8-11 2v-3l11-5z" fill="#fff"/></g>
  <rect x="-1000" y="-1000" width="2400" height="1027" fill="#05070a" opacity=".88"/>
  <g font-family="ui-monospace,DejaVu Sans Mono,monospace" font-size="13"><text x="22" y="18" fill="#41d6e8">113.90</text><text x="80" y="18" fill="#fff">110.50</text>
  <text x="200" y="18" fill="#58e07c" text-anchor="middle">HDG  ALT</text><text x="320" y="18" text-anchor="end" fill="#58e07c">121.900</text><text x="380" y="18" text-anchor="end" fill="#41d6e8">118.300</text></g>
</svg>`;

const mapAndGauges = `<svg viewBox="0 0 400 320" preserveAspectRatio="xMidYMid meet" aria-hidden="true">
  <rect x="-1000" y="-1000" width="2400" height="2400" fill="#0d2a1b"/>
  <g transform="translate(0 -46)"><path d="M96 1380V380c30-60 86-40 124-100s14-110 66-146 84-20 114-66h1000v1312z" fill="#1a4a2c"/><path d="M230 1380V380c24-70 84-60 112-110s22-70 58-86h1000v1196z" fill="#5b5a2a" opacity=".75"/>
  <path d="M96 50c44 10 70 70 44 120s-14 70-44 84z" fill="#14456f"/><path d="M140 130c60 20 80 90 150 100s70 30 110 34 500 60 700 90" fill="none" stroke="#2a6ba3" stroke-width="4" opacity=".8"/>
  <path d="M100 320l90-60 70 10 140-90 600-386" fill="none" stroke="#8a8a74" stroke-width="1.5" opacity=".7"/>
  <g fill="none" stroke="#dbe3ea" opacity=".6"><circle cx="248" cy="222" r="52"/><circle cx="248" cy="222" r="104"/></g>
  <path d="M57 1380L222 380l26-158 20-74 70-66" fill="none" stroke="#e45bf0" stroke-width="3.5"/><path d="M338 82l662-278" stroke="#fff" stroke-width="2" stroke-dasharray="7 5"/>
  <g fill="#41d6e8"><circle cx="268" cy="148" r="4.5"/><circle cx="338" cy="82" r="4.5"/></g>
  </g><path transform="translate(0 -46)" d="M250 202l6 14 20 9v5l-20-4-3 15 8 5v4l-11-3-11 3v-4l8-5-3-15-20 4v-5l20-9z" fill="#fff" stroke="#05070a"/>
  <g font-family="ui-monospace,DejaVu Sans Mono,monospace"><g font-size="13" fill="#41d6e8"><text x="277" y="104">KOSIN</text><text x="290" y="54">VELDA</text></g>
  <g font-size="12" fill="#fff"><rect x="326" y="286" width="56" height="20" fill="#05070a" opacity=".8"/><text x="376" y="301" text-anchor="end">15 NM</text></g>
  <rect x="-1000" y="27" width="1092" height="1400" fill="#05070a"/><g transform="translate(3 0) scale(.88)">
  <g fill="none" stroke-width="6"><path d="M18 98a30 30 0 0 1 60 0" stroke="#38414b"/><path d="M18 98a30 30 0 0 1 46-25" stroke="#58e07c"/></g><path d="M48 98l16-19" stroke="#fff" stroke-width="3"/>
  <text x="48" y="56" font-size="11" fill="#cfd8df" text-anchor="middle">RPM</text><text x="48" y="119" text-anchor="middle" font-size="16" fill="#fff">2380</text>
  <g font-size="10" fill="#cfd8df"><text x="14" y="148">FFLOW</text><text x="14" y="188">OIL PRES</text><text x="14" y="228">OIL TEMP</text><text x="14" y="268">EGT</text><text x="14" y="308">FUEL QTY</text><text x="14" y="346">VOLTS</text><text x="82" y="346" text-anchor="end" fill="#fff" font-size="12">27.9</text></g>
  <g stroke="#38414b" stroke-width="4"><path d="M14 160h68M14 200h68M14 240h68M14 280h68M14 320h68"/></g><g stroke="#58e07c" stroke-width="4"><path d="M30 160h34M26 200h40M36 240h28M22 280h46M34 320h48"/></g><path d="M14 320h8" stroke="#ff5a4f" stroke-width="4"/>
  <g fill="#fff"><path d="M48 158l-5-8h10zM52 198l-5-8h10zM46 238l-5-8h10zM58 278l-5-8h10zM66 318l-5-8h10z"/></g>
  </g><rect x="-1000" y="-1000" width="2400" height="1027" fill="#05070a" opacity=".92"/>
  <g font-size="13"><text x="22" y="18" fill="#41d6e8">GS 121KT</text><text x="200" y="18" text-anchor="middle" fill="#fff">MAP – NAV</text><text x="380" y="18" text-anchor="end" fill="#e45bf0">DTK 046°</text></g></g>
</svg>`;

export function screenArt(role) {
  const holder = document.createElement('div');
  holder.className = 'art';
  holder.innerHTML = role === 'MFD' ? mapAndGauges : skyAndTapes;
  return holder;
}
