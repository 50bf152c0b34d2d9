// The panels: what the device and the server are like, and the buttons that change it. Each button sends a line that a
// person could type at the prompt.
import {commandWord, element} from '/format.js';

// So many removed widgets are remembered.
const mostRemoved = 20;

const find = (id) => document.getElementById(id);

// The switches of the device: what they are called, whether they are on, and what they send.
const switches = [
  {name: 'Set up', note: (state) => state.hasKey ? `remote id ${state.remoteId || 'none'}` : 'no API key',
    isOn: (state) => state.hasKey,
    lines: (isOn, state) => isOn ? [...(state.remoteId ? [] : ['set-remote-id device-1']), 'set-key'] : ['clear-key']},
  {name: 'Internet', isOn: (state) => state.internet, lines: (isOn) => [`internet ${isOn ? 'on' : 'off'}`]},
  {name: 'vorlet.daemon', note: () => 'device service', isOn: (state) => state.daemon,
    lines: (isOn) => [`${isOn ? 'start' : 'stop'}-service daemon`]},
  {name: 'widget.manager', note: () => 'device service', isOn: (state) => state.widgetManager,
    lines: (isOn) => [`${isOn ? 'start' : 'stop'}-service widget-manager`]},
  {name: 'qwixtd', note: (state) => state.qwixtd.ours ? 'the daemon' : 'runs elsewhere',
    isOn: (state) => state.qwixtd.present, isFixed: (state) => !state.qwixtd.ours,
    lines: (isOn) => [`${isOn ? 'start' : 'stop'}-service qwixtd`]},
];

function makeSwitch(name, note, isOn, isFixed, turn) {
  const knob = element('button', {type: 'button', role: 'switch', 'aria-checked': String(isOn), 'aria-label': name,
    disabled: isFixed}, element('span', {class: 'knob'}));
  knob.addEventListener('click', () => turn(!isOn));
  return asItem(element('li', {}, element('span', {class: 'name'}, name),
    element('span', {class: 'note'}, note), knob), name, [note, isOn, isFixed]);
}

function makeRecord(text, note, action, run) {
  const item = element('li', {}, element('span', {class: 'name'}, text), element('span', {class: 'note'}, note));
  if (action) {
    const button = element('button', {type: 'button', 'aria-label': `${action} ${text}`}, action);
    button.addEventListener('click', run);
    item.append(button);
  }
  return asItem(item, text, [note]);
}

// Items of one name and one look are the same, whenever they were made.
function asItem(item, name, look) {
  return Object.assign(item, {name, look: JSON.stringify([name, ...look])});
}

// Brings a list to these items. Those that are there already stay as they are: a browser sends no click when the button
// was replaced between press and release, and its focus would be lost. The focus of
// an item that is gone goes to the field below the list.
function fill(list, items, whenEmpty) {
  const focused = [...list.children].find((item) => item.contains(document.activeElement))?.name;
  const there = new Map([...list.children].map((item) => [item.look, item]));
  const wanted = (items.length ? items : [asItem(element('li', {class: 'none'}, whenEmpty), '', [])]).map((item) => {
    const old = there.get(item.look);
    there.delete(item.look);
    return old ?? item;
  });
  const kept = new Set(wanted);
  [...list.children].filter((item) => !kept.has(item)).forEach((item) => item.remove());
  wanted.forEach((item, i) => {
    if (list.children[i] !== item) {
      list.insertBefore(item, list.children[i] ?? null);
    }
  });
  if (focused !== undefined && !list.contains(document.activeElement)) {
    const button = wanted.find((item) => item.name === focused)?.querySelector('button');
    (button ?? list.nextElementSibling?.querySelector('input'))?.focus();
  }
}

// A last item that says that there are more.
function moreOf(shown, count) {
  return shown < count ? [asItem(element('li', {class: 'none'}, `${shown} of ${count}`), '', [shown, count])] : [];
}

/** Shows the state, and sends what the buttons mean through `send`. */
export class Controls {
  constructor(send) {
    this.send = send;
    this.removedWidgets = new Set();
    this.onForm('install', (fields) => this.send(`create-widget ${commandWord(fields.id)}`), true);
    this.onForm('add', (fields) =>
      this.send(`add-app ${commandWord(fields.identifier)} ${commandWord(fields.identifier)} face`), true);
    this.onForm('ask', (fields, button) => this.ask(fields, button.value));
    this.onForm('fault', (fields) => this.send(['close', 'no-json'].includes(fields.kind)
      ? `${fields.kind} ${fields.count}` : `${fields.kind} ${fields.count} ${fields.value}`));
    find('heal').addEventListener('click', () => this.send('heal'));
    find('fault').elements.kind.addEventListener('change', () => this.showFaultValue());
    find('ask').elements.uuid.addEventListener('input', () => this.offerApplication());
  }

  onForm(id, run, isEmptied = false) {
    find(id).addEventListener('submit', (submit) => {
      submit.preventDefault();
      run(Object.fromEntries(new FormData(submit.target)), submit.submitter);
      if (isEmptied) {
        submit.target.reset();
      }
    });
  }

  ask({uuid, name, type, app}, what) {
    const words = {register: [uuid, name, type], update: [app, uuid, name, type], delete: [app, uuid, type]};
    this.send(`${what} ${words[what].map(commandWord).join(' ')}`);
  }

  showFaultValue() {
    const {kind, value} = find('fault').elements;
    const hasValue = kind.value === 'fail' || kind.value === 'delay';
    find('fault-value').hidden = !hasValue;
    value.disabled = !hasValue;
    value.value = kind.value === 'delay' ? '3000' : '503';
    find('fault-value').firstElementChild.textContent = kind.value === 'delay' ? 'Milliseconds' : 'Status';
  }

  /** The application that the server has for the widget is the one to update or delete. */
  offerApplication() {
    const {uuid, app} = find('ask').elements;
    app.value = this.state?.applications.find((record) => record.identifier === uuid.value)?.appId ?? '';
  }

  show(state) {
    const before = JSON.stringify(this.state?.applications);
    this.state = state;
    fill(find('switches'), switches.map((one) => makeSwitch(one.name, one.note?.(state) ?? '', one.isOn(state),
      one.isFixed?.(state) ?? false, async (isOn) => {
        for (const line of one.lines(isOn, this.state)) {
          await this.send(line);
        }
      })));
    this.showWidgets(state);
    fill(find('applications'), [...state.applications.map((record) => makeRecord(record.appId,
      `${record.identifier}: ${record.name}, ${record.type}`, 'Remove',
      () => this.send(`remove-app ${commandWord(record.appId)}`))),
    ...moreOf(state.applications.length, state.applicationCount)], 'none');
    fill(find('faults'), state.faults.map((fault) => makeRecord(fault, '')), 'none');
    if (JSON.stringify(state.applications) !== before) {
      this.offerApplication();
    }
  }

  // A widget that was removed stays in the list, so that it can be switched on again. Only a whole list says which it was.
  showWidgets(state) {
    const isWhole = state.widgets.length === state.widgetCount;
    (isWhole ? this.lastWidgets ?? [] : []).forEach((id) => this.removedWidgets.add(id));
    state.widgets.forEach((id) => this.removedWidgets.delete(id));
    this.removedWidgets = new Set([...this.removedWidgets].slice(-mostRemoved));
    this.lastWidgets = state.widgets;
    const all = [...state.widgets.map((id) => [id, true]), ...[...this.removedWidgets].map((id) => [id, false])];
    fill(find('widgets'), [...all.map(([id, isOn]) => makeSwitch(id, isOn ? 'installed' : 'removed', isOn, false,
      (turnOn) => this.send(`${turnOn ? 'create' : 'delete'}-widget ${commandWord(id)}`))),
    ...moreOf(state.widgets.length, state.widgetCount)], 'none installed');
    find('known').replaceChildren(...state.widgets.map((id) => element('option', {value: id})));
  }
}
