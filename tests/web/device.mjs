// A device for a test of the page: a bus of its own, the simulator with its page, and the real daemon. All of it lives in
// a temporary directory, and ends with the test program.
import {execFileSync, spawn} from 'node:child_process';
import {existsSync, mkdtempSync, rmSync, writeFileSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {join} from 'node:path';
import {fileURLToPath} from 'node:url';

const root = fileURLToPath(new URL('../..', import.meta.url));
const patienceMs = 20000;

/** Waits until a condition yields something true, and returns that. */
export async function until(what, condition, patience = patienceMs) {
  const end = Date.now() + patience;
  for (;;) {
    const value = await condition();
    if (value) {
      return value;
    }
    if (Date.now() > end) {
      throw new Error(`${what}: not within ${patience} ms`);
    }
    await new Promise((resolve) => {
      setTimeout(resolve, 20);
    });
  }
}

// A child that ends with this process, however that ends.
function run(program, words, options) {
  return spawn('setpriv', ['--pdeathsig', 'KILL', program, ...words], options);
}

async function end(child) {
  if (child && child.exitCode === null && child.signalCode === null) {
    const ended = new Promise((resolve) => {
      child.once('exit', resolve);
    });
    child.kill('SIGTERM');
    await ended;
  }
}

/** The environment names the programs: QWIXT_DEVICESIM and QWIXTD_PROGRAM. */
export class Device {
  async start() {
    this.directory = mkdtempSync(join(tmpdir(), 'qwixt-web.'));
    this.bus = `unix:path=${join(this.directory, 'bus')}`;
    this.certificates = join(this.directory, 'certificates');
    execFileSync(join(root, 'tools/make-certificates.sh'), [this.certificates]);
    this.busDaemon = run('dbus-daemon', ['--nofork', '--nosyslog', `--config-file=${root}/tools/private-bus.conf`,
      `--address=${this.bus}`], {stdio: 'ignore'});
    await until('the bus', () => existsSync(join(this.directory, 'bus')));
    this.daemonProgram = join(this.directory, 'qwixtd');
    writeFileSync(this.daemonProgram, `#!/bin/sh\nexec '${root}/tools/run-daemon.sh' '${this.certificates}/bundle.pem' ` +
      `'${this.directory}/sandbox' '${process.env.QWIXTD_PROGRAM}'\n`, {mode: 0o755});
    await this.startSimulator('0');
  }

  /** Starts the simulator with its page under this port, "0" for any. */
  async startSimulator(port) {
    this.output = '';
    this.errors = '';
    this.simulator = run(process.env.QWIXT_DEVICESIM, ['--bus', this.bus, '--certificate',
      `${this.certificates}/server.pem`, '--key', `${this.certificates}/server.key`, '--web', port,
      '--qwixtd', this.daemonProgram],
    {env: {...process.env, DBUS_SYSTEM_BUS_ADDRESS: this.bus}, stdio: ['pipe', 'pipe', 'pipe']});
    this.simulator.stdout.on('data', (text) => {
      this.output += text;
    });
    this.simulator.stderr.on('data', (text) => {
      this.errors += text;
    });
    this.url = (await this.seen(/^page: (\S+)$/m))[1];
    this.port = new URL(this.url).port;
    await this.seen(/com\.qwixtd is on the bus/);
  }

  /** What stands in the trace, once it does. */
  async seen(pattern) {
    try {
      return await until(String(pattern), () => pattern.exec(this.output));
    } catch (problem) {
      throw new Error(`${problem.message}\n${this.output.slice(-2000)}${this.errors}`);
    }
  }

  /** Types lines at the simulator's standard input. */
  type(...lines) {
    this.simulator.stdin.write(lines.map((line) => `${line}\n`).join(''));
  }

  /** What the device has as its API key, asked on the bus. */
  apiKey() {
    const reply = execFileSync('dbus-send', [`--bus=${this.bus}`, '--print-reply', '--dest=vorlet.daemon', '/general',
      'com.vorlet.daemon.general.apiKey'], {encoding: 'utf8'});
    return /string "(.*)"/.exec(reply)[1];
  }

  /** Calls the daemon as a program of its own does. */
  callAsWidget(member, ...texts) {
    execFileSync('dbus-send', [`--bus=${this.bus}`, '--print-reply', '--dest=com.qwixtd', '/',
      `com.vorlet.qwixtd.${member}`, ...texts.map((text) => `string:${text}`)]);
  }

  async stopSimulator() {
    await end(this.simulator);
  }

  async stop() {
    await this.stopSimulator();
    await end(this.busDaemon);
    rmSync(this.directory, {recursive: true, force: true});
  }
}
