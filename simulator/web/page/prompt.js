// The simulator's prompt, and the record of all that the page has sent.
import {element} from '/format.js';

const mostLines = 200;
const mostRemembered = 100;

// The first word of a line as the simulator reads it, without its quotation marks and backslashes, and what follows.
function firstWord(line) {
  const [all, written] = /^[\s\x85]*((?:\\[^]|"(?:\\[^]|[^"\\])*"?|[^\s\x85"\\])*)/.exec(line);
  const word = written.replace(/\\([^])|"/g, (whole, escaped) => escaped ?? '');
  return {word, rest: line.slice(all.length).trim()};
}

/** The API key is neither shown nor remembered, however the command is written. */
export function withoutKey(line) {
  const {word, rest} = firstWord(line);
  return ['set-key', 'server-key'].includes(word) && rest ? `${word} ***` : line;
}

/** A line to type in, with a history, and what was answered above it. */
export class Prompt {
  /** `send` sends a line and returns its answer. */
  constructor(send) {
    this.sendLine = send;
    this.log = document.getElementById('log');
    this.line = document.getElementById('line');
    this.history = [];
    this.place = 0;
    document.getElementById('prompt').addEventListener('submit', (submit) => {
      submit.preventDefault();
      this.enter();
    });
    this.line.addEventListener('keydown', (key) => this.pressed(key));
  }

  enter() {
    const line = this.line.value.trim();
    if (line) {
      this.remember(line);
      this.line.value = '';
      this.send(line);
    }
  }

  remember(line) {
    if (withoutKey(line) === line && this.history.at(-1) !== line) {
      this.history = [...this.history, line].slice(-mostRemembered);
    }
    this.place = this.history.length;
  }

  pressed(key) {
    const step = {ArrowUp: -1, ArrowDown: 1}[key.key];
    if (step) {
      key.preventDefault();
      this.place = Math.min(this.history.length, Math.max(0, this.place + step));
      this.line.value = this.history[this.place] ?? '';
    }
  }

  /** Sends a line, whoever asked for it, and shows it with its answer. */
  async send(line) {
    const answer = await this.sendLine(line);
    const isError = answer.startsWith('error');
    this.log.append(element('div', {class: isError ? 'said error' : 'said'},
      element('span', {class: 'command'}, `> ${withoutKey(line)}`), element('pre', {}, answer)));
    while (this.log.children.length > mostLines) {
      this.log.firstElementChild.remove();
    }
    this.log.scrollTop = this.log.scrollHeight;
    return answer;
  }
}
