// What the chart shows, held against the trace that the simulator writes line by line.

const unescape = (text) => text.replace(/&lt;/g, '<').replace(/&gt;/g, '>').replace(/&quot;/g, '"').replace(/&amp;/g, '&');

/** The arrows of an exported chart, each as "KIND TITLE"; notes are left out. */
export function arrowsOf(svg) {
  const labels = [...svg.matchAll(/<g class="event [^>]*aria-label="([^"]*)"/g)].map(([, label]) => unescape(label));
  return labels.map((label) => /^[\d:.]+, [^,]+ to [^,]+, (\w+), (.*)$/s.exec(label)).filter(Boolean)
    .map(([, kind, text]) => `${kind} ${text.replace(/(, again after [^,]+?)?(, (< 1 ms|\d+ ms|[\d.]+ s))?(, failed)?$/, '')}`);
}

/** The events of a saved trace. */
export function eventsOf(html) {
  return JSON.parse(/<script type="application\/json" id="trace">(.*?)<\/script>/s.exec(html)[1]);
}

function arrowsOfLine(kind, text) {
  switch (kind) {
    case 'bus': {
      const [, service, member, answer] = /^(\S+) (\w+)\(\) -> (.*)$/.exec(text);
      const isError = answer.startsWith('error ');
      return [`call ${service} ${member}()`, `answer ${isError ? answer : `${member} -> ${answer}`}`];
    }
    case 'device':
      return / says /.test(text) ? [`signal ${text}`] : [];
    case 'signal':
      return [`signal ${text.replace('com.vorlet.qwixtd.', '')}`];
    case 'widget': {
      const [, call, answer] = /^(.*) -> (answered|error .*)$/.exec(text);
      const member = /^\w+/.exec(call)[0];
      return [`call ${call}`, `answer ${answer === 'answered' ? `${member} -> ()` : answer}`];
    }
    case 'http': {
      const [, request, answer] = /^(.*) -> ((?:\d{3} |connection closed).*)$/.exec(text) ?? [];
      return request ? [`request ${request}`, `response ${answer}`] : [];
    }
    default:
      return [];
  }
}

/** The arrows that a trace has to show, each as "KIND TITLE". */
export function expectedArrows(trace) {
  return [...trace.matchAll(/^\d\d:\d\d:\d\d\.\d{3} (\w+) +(.*)$/gm)].flatMap(([, kind, text]) => arrowsOfLine(kind, text));
}
