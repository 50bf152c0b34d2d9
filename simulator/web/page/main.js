// Puts the page together: on a running simulator, or on a saved trace.
import {Chart} from '/chart.js';
import {Controls} from '/controls.js';
import {showDetails} from '/details.js';
import {Events, wrongInTrace} from '/events.js';
import {clockTime, element, lanes} from '/format.js';
import {Link} from '/link.js';
import {exportedSvg} from '/picture.js';
import {Prompt} from '/prompt.js';
import {Story, storySteps} from '/story.js';

const mostOffered = 500;
const at = (id) => document.getElementById(id);
const events = new Events();
const chart = new Chart(events, (event) => showDetails(event, events));
let link;
let story;
let wasConnected;

function say(text, kind) {
  at('connection').textContent = text;
  at('connection').className = `connection ${kind}`;
}

function listenToToolbar() {
  at('pause').addEventListener('click', () => {
    chart.setPaused(!chart.isPaused);
    at('pause').setAttribute('aria-pressed', String(chart.isPaused));
  });
  at('search').addEventListener('input', () => {
    chart.filter.text = at('search').value.toLowerCase();
    chart.rebuild();
  });
  at('widget').addEventListener('change', () => {
    chart.filter.widget = at('widget').value;
    chart.rebuild();
  });
  at('failures').addEventListener('change', () => {
    chart.filter.failuresOnly = at('failures').checked;
    chart.rebuild();
  });
  at('scale').addEventListener('change', () => {
    chart.layout.isToScale = at('scale').value === 'true';
    chart.rebuild();
  });
}

// The widgets that can be filtered by are those that something was about, as many as a person can look through. The one
// that was chosen stays.
function offerWidgets() {
  const wanted = new Set(['', chart.filter.widget]);
  for (const widget of events.widgets.keys()) {
    if (wanted.size > mostOffered) {
      break;
    }
    wanted.add(widget);
  }
  for (const option of [...at('widget').options]) {
    if (!wanted.delete(option.value)) {
      option.remove();
    }
  }
  at('widget').append(...[...wanted].map((widget) => element('option', {value: widget}, widget)));
  at('widget').title = events.widgets.size > mostOffered
    ? `${mostOffered} of ${events.widgets.size} widgets; the search finds the others` : '';
}

function download(name, type, text) {
  const url = URL.createObjectURL(new Blob([text], {type}));
  element('a', {href: url, download: name}).click();
  setTimeout(() => URL.revokeObjectURL(url), 1000);
}

// A saved trace is this page with its events inside. They hold no "<"; nothing of the file is run.
function eventsIn(html) {
  const [, list] = html.split('<script type="application/json" id="trace">');
  return list?.split('<\/script>')[0] ?? '';
}

function showTrace(text, name) {
  let list;
  try {
    list = JSON.parse(text);
  } catch {
    say(`${name} is no saved trace`, 'bad');
    return;
  }
  const wrong = wrongInTrace(list, lanes.map(({id}) => id));
  if (wrong) {
    say(`${name} is no saved trace: ${wrong}`, 'bad');
    return;
  }
  link?.close();
  story?.stop();
  at('story').hidden = true;
  document.body.classList.add('saved');
  events.clear('saved', Infinity);
  chart.setPaused(false);
  events.add(list);
  chart.rebuild();
  offerWidgets();
  const day = list.length ? `, ${new Date(list[0].t).toLocaleDateString()} ${clockTime(list[0].t, true)}` : '';
  say(`${name}: ${list.length} events${day}`, '');
}

function listenToFiles() {
  at('export').addEventListener('click', () =>
    download('qwixt-trace.svg', 'image/svg+xml', exportedSvg(chart.layout, chart.geometry.width)));
  at('open').addEventListener('click', () => at('file').click());
  at('file').addEventListener('change', async () => {
    const [file] = at('file').files;
    if (file) {
      showTrace(eventsIn(await file.text()), file.name);
      at('file').value = '';
    }
  });
}

function reportStep(index, problem, isStopped) {
  const isOver = index >= storySteps.length;
  [...at('steps').children].forEach((item, i) => {
    const isBad = i === index && problem;
    item.className = isBad ? 'bad' : (i < index ? 'done' : (i === index && !isStopped ? 'now' : ''));
    if (i === index && !isStopped) {
      item.setAttribute('aria-current', 'step');
    } else {
      item.removeAttribute('aria-current');
    }
  });
  at('storyline').textContent = isStopped ? 'The story was stopped.'
    : problem ? `Step ${index + 1} did not come true: ${problem}`
    : isOver ? 'The story came true.'
    : `Step ${index + 1} of ${storySteps.length}: ${storySteps[index]}`;
  at('storyline').className = problem ? 'bad' : '';
}

function makeStory(send, controls) {
  story = new Story(events, send, () => controls.state, reportStep);
  at('steps').append(...storySteps.map((says) => element('li', {}, says)));
  at('play').addEventListener('click', async () => {
    if (story.isPlaying) {
      story.stop();
      showPlay(controls.state);
      return;
    }
    at('story').hidden = false;
    chart.isFollowing = true;
    const end = story.play();
    showPlay(controls.state);
    await end;
    showPlay(controls.state);
  });
}

// A story that was stopped has to end before it can be played again.
function showPlay(state) {
  at('play').textContent = story.isPlaying ? 'Stop the story' : 'Play the story';
  at('play').disabled = !state.qwixtd.ours || (story.isPlaying && story.isStopped);
  at('play').title = state.qwixtd.ours ? '' : 'The story starts and stops the daemon: use tools/demo.sh --web';
}

// Each try that fails is announced; only a change is news.
function showConnection(isConnected) {
  if (isConnected !== wasConnected) {
    wasConnected = isConnected;
    say(isConnected ? 'connected' : 'no connection, trying again', isConnected ? 'good' : 'bad');
  }
}

// The simulator makes the file.
function listenToSave() {
  at('save').addEventListener('click', (click) => {
    if (!wasConnected) {
      click.preventDefault();
      say('no connection: the trace cannot be saved, but exported as SVG', 'bad');
    }
  });
}

function goLive() {
  const prompt = new Prompt((line) => link.send(line));
  const controls = new Controls((line) => prompt.send(line));
  makeStory((line) => prompt.send(line), controls);
  link = new Link({
    run: (run) => events.beginRun(run),
    events: (list) => {
      events.add(list);
      offerWidgets();
    },
    missing: (first, last) => events.addNote(-last, `Events ${first} to ${last} are no longer held`),
    state: (state) => {
      controls.show(state);
      showPlay(state);
    },
    connected: showConnection,
  });
}

listenToToolbar();
listenToFiles();
listenToSave();
if (at('trace')) {
  showTrace(at('trace').textContent, 'Saved trace');
} else {
  goLive();
}
