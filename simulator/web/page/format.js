// How values are shown.

export const lanes = [
  {id: 'widgets', name: 'Widgets', short: 'Widgets'},
  {id: 'qwixtd', name: 'qwixtd', short: 'qwixtd'},
  {id: 'device', name: 'Device services', short: 'Device'},
  {id: 'server', name: 'Developer server', short: 'Server'},
];

const two = (number) => String(number).padStart(2, '0');

/** "14:03:09.250", or without the milliseconds. */
export function clockTime(ms, isShort = false) {
  const date = new Date(ms);
  const time = `${two(date.getHours())}:${two(date.getMinutes())}:${two(date.getSeconds())}`;
  return isShort ? time : `${time}.${String(date.getMilliseconds()).padStart(3, '0')}`;
}

/** "< 1 ms", "12 ms", "5.0 s" or "2 min 5 s". */
export function duration(ms) {
  if (ms < 1) {
    return '< 1 ms';
  }
  if (ms < 1000) {
    return `${Math.round(ms)} ms`;
  }
  if (ms < 60000) {
    return `${(ms / 1000).toFixed(1)} s`;
  }
  return `${Math.floor(ms / 60000)} min ${Math.floor(ms % 60000 / 1000)} s`;
}

/** What is remarkable in an event: how long it took, what failed, what is done again. */
export function remarks(event) {
  const said = [];
  if (event.retryOf) {
    said.push(`again after ${duration(event.retryAfterMs)}`);
  }
  if (event.kind === 'response' || event.ms >= 100) {
    said.push(duration(event.ms));
  }
  return said;
}

export const laneName = (id) => lanes.find((lane) => lane.id === id)?.name ?? id;

/** The event in words, for who does not see the picture. */
export function spoken(event) {
  const way = event.from === event.to ? laneName(event.from)
                                      : `${laneName(event.from)} to ${laneName(event.to)}`;
  const failed = event.failed ? 'failed' : '';
  return [clockTime(event.t), way, event.kind, event.title, ...remarks(event), failed].filter(Boolean).join(', ');
}

/** One word of a command line, whatever it holds; only a carriage return becomes a space, for which there is no word. */
export function commandWord(text) {
  return `"${text.replace(/[\\"]/g, '\\$&').replace(/\n/g, '\\n').replace(/\r/g, ' ').replace(/\t/g, '\\t')}"`;
}

const bytesOf = (characters) => Uint8Array.from(characters, (character) => character.charCodeAt(0));

/** Bytes that came as characters from 0 to 255, as text; what ends a line and cannot be seen is written out. */
export function bytesAsText(characters) {
  return new TextDecoder().decode(bytesOf(characters))
    .replace(/\r/g, '\\r').replace(/\n/g, '\\n\n').replace(/\0/g, '\\0').replace(/\t/g, '\\t');
}

/** The same bytes as lines of hexadecimal digits, sixteen bytes each. */
export function bytesAsHex(characters) {
  const lines = [];
  for (let start = 0; start < characters.length; start += 16) {
    const part = characters.slice(start, start + 16);
    const digits = Array.from(bytesOf(part), (byte) => byte.toString(16).padStart(2, '0')).join(' ');
    lines.push(`${start.toString(16).padStart(6, '0')}  ${digits.padEnd(47)}  ${part.replace(/[^ -~]/g, '.')}`);
  }
  return lines.join('\n');
}

/** An element with its attributes and what is in it; text is text, whatever it holds. */
export function element(name, attributes = {}, ...content) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value === true || value === false) {
      made.toggleAttribute(key, value);
    } else {
      made.setAttribute(key, value);
    }
  }
  made.append(...content);
  return made;
}
