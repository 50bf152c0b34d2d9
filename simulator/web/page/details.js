// All that is known of one event, and of what belongs to it.
import {bytesAsHex, bytesAsText, clockTime, duration, element, laneName} from '/format.js';

const panel = document.getElementById('details');
let showsHex = false;

function facts(event) {
  const way = event.from === event.to ? laneName(event.from) : `${laneName(event.from)} \u2192 ${laneName(event.to)}`;
  const known = [
    ['Time', clockTime(event.t)],
    ['Where', way],
    ['Service', event.service],
    ['Object', event.path],
    ['Interface', event.interface],
    ['Widget', event.widget],
    ['Status', event.status === 0 ? 'none' : event.status],
    ['Took', event.ms === undefined ? '' : duration(event.ms)],
    ['Failed', event.failed ? event.failure || 'yes' : ''],
    ['Repeated', event.retryOf ? `${duration(event.retryAfterMs)} after the answer to the last try` : ''],
  ].filter(([, value]) => value);
  return element('dl', {}, ...known.map(([name, value]) =>
    element('div', {}, element('dt', {}, name), element('dd', {}, String(value)))));
}

function part(title, text) {
  return [element('h3', {}, title), element('pre', {tabindex: '0', 'aria-label': title}, text)];
}

function bytesPart(title, event) {
  const kept = event.bytes.length >= 64 * 1024 ? ', its first 64 KiB' : '';
  return part(`${title}${kept}`, showsHex ? bytesAsHex(event.bytes) : bytesAsText(event.bytes));
}

function contents(event) {
  if (event.kind === 'request') {
    return bytesPart('Request, as it came', event);
  }
  if (event.kind === 'response') {
    return event.bytes ? bytesPart('Answer, as it went', event) : part('Answer', 'none: the connection was closed');
  }
  const titles = {call: 'Arguments', answer: 'What was answered', signal: 'Arguments'};
  return titles[event.kind] ? part(titles[event.kind], JSON.stringify(event.args, null, 2)) : [];
}

function close(chart) {
  panel.hidden = true;
  panel.replaceChildren();
  chart.focus();
}

/** Shows the event with its question or its answer beside it. */
export function showDetails(event, events) {
  const chart = document.getElementById('chart');
  const first = events.questionOf(event) ?? event;
  const all = [first, first === event ? events.answerOf(event) : event].filter(Boolean);
  const shut = element('button', {type: 'button', 'aria-label': 'Close the details'}, 'Close');
  shut.addEventListener('click', () => close(chart));
  const head = element('div', {class: 'head'}, element('h2', {}, event.title), shut);
  if (all.some((one) => one.bytes)) {
    const hex = element('input', {type: 'checkbox', checked: showsHex});
    hex.addEventListener('change', () => {
      showsHex = hex.checked;
      showDetails(event, events);
      panel.querySelector('input').focus();
    });
    head.insertBefore(element('label', {class: 'check'}, hex, ' Hexadecimal'), shut);
  }
  panel.replaceChildren(head, facts(event), ...all.flatMap(contents));
  panel.onkeydown = (key) => {
    if (key.key === 'Escape') {
      close(chart);
    }
  };
  panel.hidden = false;
}
