// Holds the schemas, the samples and the gallery against an independent validator and against the program's own verdict.
//   node check.mjs CONFIG-VERDICT VANTREL
// gallery/good: both take the file. gallery/bad: both refuse it, the program with the words of bad/messages.json.
// gallery/tolerated: the program takes it, and the schema reports what the program would pass over in silence.
// Of each of them, `vantrel check` reports an error exactly if the program refuses it, and its output has its schema's form.
// So has that of `boards` and `doctor`, and `vantrel report` writes an archive once.

import Ajv from 'ajv/dist/2020.js';
import {execFileSync, spawnSync} from 'node:child_process';
import {cpSync, existsSync, mkdtempSync, readdirSync, readFileSync, rmSync} from 'node:fs';
import {tmpdir} from 'node:os';
import {dirname, join, resolve} from 'node:path';
import {fileURLToPath} from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const root = resolve(here, '../..');
const [verdictProgram, companion] = process.argv.slice(2);
const kinds = ['config', 'buttons', 'hid_event_map'];

let passed = 0;
let failed = 0;
function check(title, fault) {
  if (fault) {
    ++failed;
    console.log(`FAILED: ${title}: ${fault}`);
  } else {
    ++passed;
  }
}

const schemas = {};
const validators = {};
for (const kind of kinds) {
  schemas[kind] = JSON.parse(readFileSync(join(root, 'schemas', `${kind}.schema.json`), 'utf8'));
  const ajv = new Ajv({strict: true, allErrors: true});
  check(`${kind}: is a schema of draft 2020-12`, ajv.validateSchema(schemas[kind]) ? '' : ajv.errorsText());
  validators[kind] = ajv.compile(schemas[kind]);
}

/// Empty when the schema takes the file, else why not.
function schemaVerdict(kind, path) {
  let document;
  try {
    document = JSON.parse(readFileSync(path, 'utf8'));
  } catch (failure) {
    return `not JSON: ${failure.message}`;
  }
  if (validators[kind](document)) {
    return '';
  }
  return validators[kind].errors.map((error) => `${error.instancePath} ${error.message}`).join('; ') || 'refused';
}

/// The program's line for each file, by path.
function programVerdicts(kind, paths) {
  const lines = execFileSync(verdictProgram, [kind, ...paths], {encoding: 'utf8'}).replace(/\n$/, '').split('\n');
  if (lines.length !== paths.length) {
    throw new Error(`${verdictProgram} gave ${lines.length} verdicts for ${paths.length} files`);
  }
  return new Map(paths.map((path, place) => [path, lines[place]]));
}

function checkSamples() {
  for (const kind of kinds) {
    const path = join(root, 'config', `${kind}.json`);
    check(`config/${kind}.json: schema`, schemaVerdict(kind, path));
    const said = programVerdicts(kind, [path]).get(path);
    check(`config/${kind}.json: program`, said === 'ok' ? '' : said);
    const named = JSON.parse(readFileSync(path, 'utf8')).$schema;
    const meant = resolve(dirname(path), named ?? '');
    check(`config/${kind}.json: names its schema`,
          meant === join(root, 'schemas', `${kind}.schema.json`) && existsSync(meant) ? '' : `$schema is ${named}`);
  }
}

function galleryFiles(group, kind) {
  const folder = join(here, 'gallery', group, kind);
  return readdirSync(folder).filter((name) => name.endsWith('.json')).sort().map((name) => join(folder, name));
}

function checkGallery() {
  const messages = JSON.parse(readFileSync(join(here, 'gallery/bad/messages.json'), 'utf8'));
  const unused = new Set(Object.keys(messages));
  for (const kind of kinds) {
    for (const group of ['good', 'bad', 'tolerated']) {
      const paths = galleryFiles(group, kind);
      const said = programVerdicts(kind, paths);
      check(`gallery/${group}/${kind}: has files`, paths.length > 0 ? '' : 'none');
      for (const path of paths) {
        const name = path.slice(join(here, 'gallery', group).length + 1);
        const title = `gallery/${group}/${name}`;
        const refusal = schemaVerdict(kind, path);
        check(`${title}: schema`, group === 'good' ? refusal : refusal ? '' : 'the schema takes it');
        const expected = group === 'bad' ? messages[name] : 'ok';
        check(`${title}: program`, said.get(path) === expected ? '' : `"${said.get(path)}" instead of "${expected}"`);
        unused.delete(name);
      }
    }
  }
  check('gallery/bad/messages.json: each entry has its file', [...unused].join(', '));
}

/// What `vantrel check` finds in the sample set with one file replaced.
function companionFindings(kind, path, folder) {
  cpSync(join(root, 'config'), folder, {recursive: true});
  cpSync(path, join(folder, `${kind}.json`));
  const run = spawnSync(companion, ['check', '--json', '--config', join(folder, 'config.json')], {encoding: 'utf8'});
  return {code: run.status, findings: JSON.parse(run.stdout)};
}

function checkCompanion() {
  const ajv = new Ajv({strict: true});
  const isOutput = ajv.compile(JSON.parse(readFileSync(join(root, 'companion/schemas/check.schema.json'), 'utf8')));
  const folder = mkdtempSync(join(tmpdir(), 'vantrel-check-'));
  for (const kind of kinds) {
    for (const group of ['good', 'bad', 'tolerated']) {
      for (const path of galleryFiles(group, kind)) {
        const {code, findings} = companionFindings(kind, path, folder);
        const title = `vantrel check, gallery/${group}/${kind}/${path.slice(path.lastIndexOf('/') + 1)}`;
        check(`${title}: form`, isOutput(findings) ? '' : ajv.errorsText(isOutput.errors));
        // A file of another name that this one asks for isn't there.
        const errors = findings.filter((finding) => finding.severity === 'error' && finding.code !== 'missing-file' &&
                                                    finding.file.endsWith(`${kind}.json`));
        check(`${title}: error`, (errors.length > 0) === (group === 'bad') ? '' : JSON.stringify(findings));
        const clean = findings.every((finding) => finding.severity === 'hint');
        check(`${title}: exit code`, code === (clean ? 0 : 1) ? '' : `${code}`);
      }
    }
  }
  rmSync(folder, {recursive: true});
}

function checkBoardList() {
  const ajv = new Ajv({strict: true});
  const isOutput = ajv.compile(JSON.parse(readFileSync(join(root, 'companion/schemas/boards.schema.json'), 'utf8')));
  const config = join(root, 'config/config.json');
  const listed = spawnSync(companion, ['boards', '--all', '--json', '--config', config], {encoding: 'utf8'});
  check('vantrel boards: form', isOutput(JSON.parse(listed.stdout)) ? '' : ajv.errorsText(isOutput.errors));
  const board = {path: 'x', opens: true, writable: true, vendorId: '16C0', productId: '27DB', serial: '', matches: true,
                 boardId: '00000000000000A1', protocolVersion: '1.2', role: 'PFD'};
  check('boards.schema.json: takes a board', isOutput([board]) ? '' : ajv.errorsText(isOutput.errors));
  check('boards.schema.json: refuses other ids', isOutput([{...board, vendorId: '16c0'}]) ? 'taken' : '');
}

function checkDoctor() {
  const ajv = new Ajv({strict: true});
  const isOutput = ajv.compile(JSON.parse(readFileSync(join(root, 'companion/schemas/doctor.schema.json'), 'utf8')));
  const config = join(root, 'config/config.json');
  const run = spawnSync(companion, ['doctor', '--json', '--config', config], {encoding: 'utf8'});
  const answers = JSON.parse(run.stdout);
  check('vantrel doctor: form', isOutput(answers) ? '' : ajv.errorsText(isOutput.errors));
  const good = answers.every((answer) => answer.mark === 'good');
  check('vantrel doctor: exit code', run.status === (good ? 0 : 1) ? '' : `${run.status}`);
  check('vantrel doctor: a remedy for each fault',
        answers.every((answer) => (answer.mark === 'good') === (answer.remedy === '')) ? '' : run.stdout);
}

function checkReport() {
  const folder = mkdtempSync(join(tmpdir(), 'vantrel-report-'));
  const file = join(folder, 'a.zip');
  const report = (path) => spawnSync(companion, ['report', path, '--config', join(root, 'config/config.json')], {encoding: 'utf8'});
  const first = report(file);
  check('vantrel report: lists what it holds and where it is', first.status === 0 && first.stdout.includes('doctor.txt') &&
                                                               first.stdout.includes(file) ? '' : first.stdout + first.stderr);
  const archive = readFileSync(file);
  check('vantrel report: writes a zip file', archive.subarray(0, 2).toString() === 'PK' ? '' : 'another form');
  const second = report(file);
  check('vantrel report: overwrites nothing', second.status === 2 && readFileSync(file).equals(archive) ? '' : `${second.status}`);
  const third = report(join(folder, 'none/a.zip'));
  check('vantrel report: says why it fails', third.status === 3 && third.stderr.includes('No such file') ? '' : third.stderr);
  check('vantrel report: leaves nothing else', readdirSync(folder).join() === 'a.zip' ? '' : readdirSync(folder).join());
  rmSync(folder, {recursive: true});
}

function checkMinAgainstMax() {
  const document = {hid: {vid: '1', pid: '1'}, mappings: {buttonConfigPath: 'b'}, outputs: {profiles: {day: {}}}};
  const wrong = [];
  for (let min = 0; min <= 100; ++min) {
    for (let max = 0; max <= 100; ++max) {
      document.outputs.profiles.day.backlight = {min, max};
      if (validators.config(document) !== min <= max) {
        wrong.push(`${min}/${max}`);
      }
    }
  }
  check('config: min is never above max, for all of their values', wrong.join(' '));
}

function resolved(node) {
  return node.$ref?.startsWith('#/$defs/') ? {...schemas.config.$defs[node.$ref.slice(8)], ...node} : node;
}

function checkDefaults() {
  const said = new Map(execFileSync(verdictProgram, ['defaults'], {encoding: 'utf8'}).replace(/\n$/, '').split('\n').map(
      (line) => [line.slice(0, line.indexOf(' ')), line.slice(line.indexOf(' ') + 1)]));
  check('config: the program prints its defaults', said.size > 30 ? '' : `only ${said.size}`);
  const defs = schemas.config.$defs;
  for (const [path, value] of said) {
    const [section, key] = path.split('.');
    let stated;
    if (section === 'simDisconnected' || section === 'batteryOff') {
      stated = defs.profile.properties[section].default[key];
    } else {
      const owner = defs[section] ?? resolved(schemas.config.properties[section]);
      stated = owner.properties[key]?.default;
    }
    check(`config: default of ${path}`, String(stated) === value ? '' : `${stated} instead of ${value}`);
  }
}

function checkDescriptions() {
  for (const kind of kinds) {
    const bare = [];
    const walk = (node, place) => {
      if (node === null || typeof node !== 'object') {
        return;
      }
      for (const [name, member] of Object.entries(node.properties ?? {})) {
        const described = member.description ?? resolved(member).description ?? schemas[kind].$defs?.[member.$ref?.slice(8)]?.description;
        if (!described && !place.match(/\/(if|then|else|anyOf|allOf)(\/|$)/)) {
          bare.push(`${place}/${name}`);
        }
      }
      for (const [name, member] of Object.entries(node)) {
        walk(member, `${place}/${name}`);
      }
    };
    walk(schemas[kind], '');
    check(`${kind}: every key is described`, bare.join(', '));
  }
}

checkSamples();
checkGallery();
checkCompanion();
checkBoardList();
checkDoctor();
checkReport();
checkMinAgainstMax();
checkDefaults();
checkDescriptions();
console.log(`check: ${passed} passed, ${failed} failed`);
process.exit(failed === 0 && passed > 0 ? 0 : 1);
