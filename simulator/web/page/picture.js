// Draws rows of the chart as SVG, for the screen and for the export alike.
import {clockTime, duration, lanes, remarks, spoken} from '/format.js';
import {rowHeight} from '/layout.js';

const svgSpace = 'http://www.w3.org/2000/svg';
const characterWidth = 7.25;
const shaftOffset = 23;

// What no XML may hold, not even written as a number: most control characters, half characters and two that are none.
const forbidden = /[\0-\x08\x0b\x0c\x0e-\x1f\ufffe\uffff]|\p{Surrogate}/gu;
const allowed = (value) => typeof value === 'string' ? value.replace(forbidden, '\ufffd') : value;

/** An SVG element; text is text, whatever it holds. */
export function svg(name, attributes = {}, ...content) {
  const made = document.createElementNS(svgSpace, name);
  for (const [key, value] of Object.entries(attributes)) {
    made.setAttribute(key, allowed(value));
  }
  made.append(...content.map(allowed));
  return made;
}

/** Where the lanes stand in a picture of this width. */
export function geometryOf(width) {
  const isNarrow = width < 640;
  const left = isNarrow ? 70 : 104;
  const step = (width - left) / lanes.length;
  const x = Object.fromEntries(lanes.map((lane, i) => [lane.id, Math.round(left + step * (i + 0.5))]));
  return {width, isNarrow, left, x};
}

function cut(text, width) {
  const most = Math.max(4, Math.floor(width / characterWidth));
  return text.length > most ? `${text.slice(0, most - 1)}\u2026` : text;
}

/** The lines of the lanes from one height to another. */
export function laneLines(geometry, top, bottom) {
  return lanes.map((lane) => svg('line', {
    class: 'lane-line', x1: geometry.x[lane.id], x2: geometry.x[lane.id], y1: top, y2: bottom,
  }));
}

function arrow(event, geometry, y) {
  const from = geometry.x[event.from];
  const to = geometry.x[event.to];
  const direction = to > from ? 1 : -1;
  const isAnswer = event.kind === 'answer' || event.kind === 'response';
  const back = to - direction * 8;
  const head = `M${back} ${y - 4.5} L${to} ${y} L${back} ${y + 4.5}`;
  return [
    svg('line', {class: 'shaft', x1: from, x2: to - direction * (isAnswer ? 1 : 6), y1: y, y2: y}),
    svg('circle', {class: 'foot', cx: from, cy: y, r: 2.5}),
    svg('path', isAnswer ? {class: 'head open', d: head} : {class: 'head', d: `${head} Z`}),
  ];
}

// A label begins where its arrow does, or further left where there is little room, and may go on over lanes that have
// nothing in this row.
function label(event, geometry, y) {
  const x = geometry.isNarrow ? geometry.left + 4 : Math.min(geometry.x[event.from], geometry.x[event.to]) + 10;
  const said = remarks(event);
  const mark = event.failed ? '\u2715 ' : (event.retryOf ? '\u21bb ' : '');
  const badge = said.length ? `  ${said.join(', ')}` : '';
  const room = geometry.width - x - 12;
  const badgeRoom = Math.min((badge.length + 1) * characterWidth, room * 0.6);
  // The lane says enough of who it is.
  const words = geometry.isNarrow ? event.title.replace(/^(vorlet\.daemon|widget\.manager) (says )?/, '') : event.title;
  const title = mark + cut(words, room - badgeRoom - mark.length * characterWidth);
  return svg('text', {class: 'label', x, y: y - 7, 'xml:space': 'preserve'},
    svg('tspan', {}, title), ...(badge ? [svg('tspan', {class: 'badge'}, cut(badge, badgeRoom))] : []));
}

// A line of a person's own, across all lanes.
function banner(event, geometry, y) {
  const width = geometry.width - geometry.left - 12;
  return [
    svg('rect', {class: 'banner', x: geometry.left, y: y - 17, width, height: 24, rx: 5}),
    svg('text', {class: 'label strong', x: geometry.left + 10, y}, cut(event.title, width - 20)),
  ];
}

// What happens at one place.
function happening(event, geometry, y) {
  const x = geometry.x[event.from];
  const isLast = x > geometry.width * 0.7;
  const room = isLast ? x - geometry.left - 20 : geometry.width - x - 24;
  const title = cut((event.failed ? '\u2715 ' : '') + event.title, room);
  return [
    svg('circle', {class: 'dot', cx: x, cy: y - 6, r: 4.5}),
    svg('text', {class: 'label', x: isLast ? x - 12 : x + 12, y: y - 2, 'text-anchor': isLast ? 'end' : 'start'}, title),
  ];
}

function drawPause(row, geometry) {
  const width = geometry.width - geometry.left;
  const text = row.isUntilRetry ? `${duration(row.pause)} until the next try` : duration(row.pause);
  return svg('g', {class: 'pause', role: 'presentation'},
    svg('rect', {class: 'fold', x: geometry.left, y: row.y + 3, width, height: row.height - 6}),
    svg('text', {class: 'label quiet', x: geometry.left + width / 2, y: row.y + row.height / 2 + 4,
      'text-anchor': 'middle'}, text));
}

/** One row of the picture. Rows of events are options of the list that the picture is. */
export function drawRow(row, geometry, total, isSelected) {
  if (!row.event) {
    return drawPause(row, geometry);
  }
  const {event} = row;
  const y = row.y + shaftOffset;
  const draw = event.from === '' ? banner : (event.from === event.to ? happening : undefined);
  const marks = draw ? draw(event, geometry, y)
                     : [...arrow(event, geometry, y), label(event, geometry, y)];
  const classes = ['event', event.kind, event.failed && 'failed', event.retryOf && 'retry', isSelected && 'selected'];
  return svg('g', {class: classes.filter(Boolean).join(' '), id: `event-${event.run}-${event.n}`, role: 'option',
    'aria-selected': String(isSelected), 'aria-label': spoken(event), 'aria-posinset': row.position,
    'aria-setsize': total},
  svg('rect', {class: 'row', x: 0, y: row.y, width: geometry.width, height: rowHeight}),
  svg('text', {class: 'time', x: 12, y}, clockTime(event.t, geometry.isNarrow)), ...marks);
}

// The rules of the page that concern the picture, with the colours that it has now.
function styleText() {
  const root = getComputedStyle(document.documentElement);
  const rules = [...document.styleSheets].flatMap((sheet) => [...sheet.cssRules])
    .filter((rule) => rule.selectorText?.startsWith('.picture')).map((rule) => rule.cssText).join('\n');
  return rules.replace(/var\((--[a-z-]+)\)/g, (whole, name) => root.getPropertyValue(name).trim());
}

// More rows than these take a browser long to draw and longer to open.
const mostExported = 10000;

/** The chart as a file of its own: its newest rows, which says so when there are more. */
export function exportedSvg(layout, screenWidth) {
  const geometry = geometryOf(Math.max(screenWidth, 900));
  const rows = layout.rows.slice(-mostExported);
  const begin = rows[0]?.y ?? 0;
  const isCut = rows.length < layout.rows.length;
  const top = isCut ? 60 : 36;
  const height = Math.ceil(layout.height - begin) + top + 8;
  const remark = isCut ? [svg('text', {class: 'label quiet', x: 12, y: 46},
    `The newest ${mostExported} rows of ${layout.rows.length}; a filter leaves fewer.`)] : [];
  const names = lanes.map((lane) => svg('text', {class: 'label strong', x: geometry.x[lane.id], y: 22,
    'text-anchor': 'middle'}, lane.name));
  const body = svg('g', {transform: `translate(0 ${top - begin})`}, ...laneLines(geometry, begin, layout.height),
    ...rows.map((row) => drawRow(row, geometry, layout.eventCount, false)));
  const picture = svg('svg', {class: 'picture', width: geometry.width, height,
    viewBox: `0 0 ${geometry.width} ${height}`},
  svg('style', {}, styleText()), svg('rect', {class: 'ground', width: '100%', height: '100%'}), ...names, ...remark, body);
  return `<?xml version="1.0" encoding="UTF-8"?>\n${new XMLSerializer().serializeToString(picture)}\n`;
}
