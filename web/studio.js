'use strict';
// The browser studio. Archives chosen or dropped go to the page's worker,
// which holds the library and the modding core; this thread only shows what
// the worker answers and hands it the user's edits. Every edit is the one
// `lbx unpack`, the same change to the files and `lbx pack` would make, with
// their messages; nothing leaves the page but the files the user downloads.
(() => {
  const messages = document.getElementById('messages');
  const shown = document.getElementById('shown');
  const nav = document.getElementById('archives');
  const opened = new Set(); // file names, as the user named them

  const make = (tag, attributes = {}, ...children) => {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
    element.append(...children);
    return element;
  };
  const say = (where, line, kind = 'note') => where.append(make('p', { class: kind }, line));

  // The worker, made from the source this page carries, so that the page
  // works as one file opened from the disk as well as served.
  const worker = new Worker(URL.createObjectURL(new Blob([document.getElementById('worker-source').textContent],
                                                        { type: 'text/javascript' })));
  const waiting = new Map();
  let nextCall = 0;
  worker.onmessage = ({ data }) => {
    if (data.said !== undefined) return say(messages, data.said);
    const { resolve, reject } = waiting.get(data.id);
    waiting.delete(data.id);
    if (data.failure !== undefined) reject(new Error(data.failure));
    else resolve(data.value);
  };
  const ask = (archive, method, args, handed) => new Promise((resolve, reject) => {
    waiting.set(++nextCall, { resolve, reject });
    worker.postMessage({ id: nextCall, archive, method, args }, handed);
  });
  const call = (archive, method, ...args) => ask(archive, method, args, []);
  // A whole archive travels without a copy; the page keeps none of it.
  const handOver = (archive, method, bytes) => ask(archive, method, [bytes], [bytes.buffer]);

  lbxPage.setupZoom(document.getElementById('zoom'));

  const canvasOf = (width, height) =>
    make('canvas', { class: 'pix', width, height, style: `--w:${width};--h:${height}` });

  function paint(canvas, rgba) {
    if (rgba === null) return false;
    canvas.getContext('2d').putImageData(new ImageData(new Uint8ClampedArray(rgba.buffer), canvas.width, canvas.height), 0, 0);
    return true;
  }

  function download(name, bytes, type = 'application/octet-stream') {
    const link = make('a', { href: URL.createObjectURL(new Blob([bytes], { type })), download: name });
    document.body.append(link);
    link.click();
    link.remove();
    setTimeout(() => URL.revokeObjectURL(link.href), 10000);
  }

  const bytesOf = async (file) => new Uint8Array(await file.arrayBuffer());
  const stemOf = (name) => name.replace(/\.[^.]*$/, '');
  // A file picker that hands its files to `chosen` and is then empty again,
  // so that the same file can be chosen once more.
  const fileInput = (label, accept, action, chosen, multiple = false) => {
    const input = make('input', { type: 'file', accept, class: action });
    input.multiple = multiple;
    input.addEventListener('change', () => {
      const files = [...input.files];
      input.value = '';
      if (files.length > 0) chosen(files);
    });
    return make('label', {}, label, input);
  };

  function swatch(palette) {
    const count = palette.rgba.length / 4;
    const grid = make('div', { class: 'swatch' });
    for (let i = 0; i < count; ++i) {
      const [red, green, blue, alpha] = palette.rgba.slice(i * 4, i * 4 + 4);
      const hex = '#' + [red, green, blue].map((part) => part.toString(16).padStart(2, '0')).join('');
      grid.append(alpha === 0 ? make('i', { class: 'clear', title: `${palette.first + i} ${hex} transparent` })
                              : make('i', { style: `background:${hex}`, title: `${palette.first + i} ${hex}` }));
    }
    return [make('p', { class: 'note' }, `palette, colours ${palette.first}\u2013${palette.first + count - 1}`), grid];
  }

  // The outcome of an edit in the archive's own message area: the change
  // as pack says it, warnings, or the refusal, with the nearest colours
  // offered where the palette lacks a colour.
  // The page counts the outcomes it has shown in data-edits.
  let outcomes = 0;
  async function edited(name, outcome, retryNearest) {
    const section = document.getElementById(stemOf(name));
    const area = section.querySelector('.messages');
    area.replaceChildren();
    if (outcome.error) {
      say(area, outcome.error, 'error');
      if (retryNearest && /nearest/.test(outcome.error)) {
        const nearest = make('button', { class: 'nearest' }, 'take the nearest colours');
        nearest.addEventListener('click', async () => edited(name, await retryNearest(), null));
        area.append(make('p', {}, nearest));
      }
    } else {
      for (const warning of outcome.warnings ?? []) say(area, 'warning: ' + warning);
      if (outcome.change) say(area, 'changed ' + outcome.change);
      await refresh(stemOf(name));
    }
    document.body.dataset.edits = String(++outcomes);
  }

  function frameTools(name, index, entry, card) {
    const number = make('input', { type: 'number', class: 'frame-number', min: 0, max: entry.frames - 1, value: 0 });
    const remove = make('button', { class: 'remove-frame' }, 'remove it');
    const replaceWith = async (file, frame) => {
      const png = await bytesOf(file);
      edited(name, await call(name, 'replaceFrame', index, frame, png, false),
             () => call(name, 'replaceFrame', index, frame, png, true));
    };
    const replaceLabel = fileInput('replace it with a PNG ', '.png,image/png', 'replace-frame',
                                   ([file]) => replaceWith(file, Number(number.value)));
    const addLabel = fileInput('add a frame ', '.png,image/png', 'add-frame', async ([file]) => {
      const png = await bytesOf(file);
      edited(name, await call(name, 'addFrame', index, png, false), () => call(name, 'addFrame', index, png, true));
    });
    remove.addEventListener('click', async () => edited(name, await call(name, 'removeFrame', index, Number(number.value))));
    // A PNG dropped on a frame replaces that frame; on the player, the
    // frame it shows.
    card.addEventListener('drop', (event) => {
      const canvas = event.target.closest('canvas');
      if (!canvas || event.dataTransfer.files.length === 0) return;
      event.preventDefault();
      event.stopPropagation();
      replaceWith(event.dataTransfer.files[0], Number(canvas.dataset.frame ?? card.player?.shown ?? 0));
    });
    card.append(make('p', { class: 'edit' }, make('label', {}, 'frame ', number), ' ', replaceLabel, ' ', remove, ' ', addLabel));
  }

  async function pictures(name, index, entry, card, stem) {
    const frame = async (canvas, number) => paint(canvas, await call(name, 'frame', index, number));
    const pngButton = (canvas, number) => {
      const button = make('button', {}, 'PNG');
      button.addEventListener('click', () => canvas.toBlob((blob) =>
        download(`${stem}_${String(number()).padStart(3, '0')}.png`, blob)));
      return button;
    };
    const canvas = canvasOf(entry.width, entry.height);
    if (entry.frames === 1) {
      canvas.dataset.frame = '0';
      await frame(canvas, 0);
      card.append(canvas, make('p', {}, pngButton(canvas, () => 0)));
      return;
    }
    const player = make('div', { class: 'player' }, canvas);
    card.append(player);
    const playing = new lbxPage.Player(player, entry.frames, entry.loop, (number) => frame(canvas, number));
    card.player = playing;
    player.querySelector('.controls').append(pngButton(canvas, () => playing.shown));
    card.append(make('p', { class: 'note' }, (entry.loop ? 'loops' : 'plays once, as it has no loop flag')
      + (entry.delta ? '; frames that build on the one before are shown drawn over it, as the game shows them' : '')));
    const strip = make('details', { class: 'strip' }, make('summary', {}, `${entry.frames} frames`));
    strip.addEventListener('toggle', async () => {
      if (!strip.open || strip.drawing) return;
      strip.drawing = true;
      for (let number = 0; number < entry.frames; ++number) {
        const still = canvasOf(entry.width, entry.height);
        still.dataset.frame = String(number);
        await frame(still, number);
        still.addEventListener('click', () => playing.seek(number));
        strip.append(still);
      }
      strip.dataset.drawn = '1';
    });
    card.append(strip);
  }

  async function fonts(name, index, entry, card) {
    for (const [number, face] of entry.fonts.entries()) {
      const sheet = await call(name, 'glyphs', index, number);
      const figure = make('figure');
      if (sheet.error) figure.append(make('p', { class: 'error' }, sheet.error));
      else paint(figure.appendChild(canvasOf(sheet.width, sheet.height)), sheet.rgba);
      const lines = [];
      for (let row = 0; row < 256; row += 16)
        lines.push(row.toString(16).padStart(2, '0') + ': ' + face.widths.slice(row, row + 16).join(' '));
      figure.append(make('figcaption', {}, `font ${number}, height ${face.height}`),
        make('details', {}, make('summary', {}, 'widths'), make('pre', {}, lines.join('\n'))));
      card.append(figure);
    }
  }

  // A text table's records, each edited in place with its bytes against
  // the room its record has shown as it is typed.
  function records(name, index, rows) {
    const list = make('ol', { class: 'rows', start: '0' });
    rows.forEach((row, number) => {
      const input = make('input', { class: 'record', value: row, spellcheck: 'false', 'data-record': number });
      const room = make('span', { class: 'room note' });
      const count = async () => {
        const { bytes, room: most, error } = await call(name, 'recordBytes', index, input.value);
        room.textContent = error ?? `${bytes} of ${most} bytes`;
        room.classList.toggle('error', error !== undefined || bytes > most);
      };
      input.addEventListener('focus', count);
      input.addEventListener('input', count);
      input.addEventListener('change', async () => edited(name, await call(name, 'setRecord', index, number, input.value)));
      list.append(make('li', {}, input, ' ', room));
    });
    return list;
  }

  function sound(name, index, card) {
    const label = fileInput('replace it with a WAVE file ', '.wav,audio/wav', 'replace-sound', async ([file]) =>
      edited(name, await call(name, 'replaceSound', index, await bytesOf(file))));
    card.append(make('p', { class: 'edit' }, label));
  }

  // Everything of one entry; called when its card comes near the screen.
  async function draw(name, index, card) {
    const entry = await call(name, 'describe', index);
    const stem = entry.file ? entry.file.replace(/\.[^.]*$/, '') : `${stemOf(name)}_${index}`;
    card.dataset.kind = entry.kind ?? '';
    card.append(make('pre', {}, entry.info ?? ''));
    if (entry.error) card.append(make('p', { class: 'error' }, entry.error));
    if (entry.frames > 0) {
      await pictures(name, index, entry, card, stem);
      frameTools(name, index, entry, card);
    }
    if (entry.palette) card.append(...swatch(entry.palette));
    if (entry.fonts) await fonts(name, index, entry, card);
    if (entry.rows) card.append(records(name, index, entry.rows));
    if (entry.kind === 'sound') sound(name, index, card);
    const bytes = await call(name, 'bytes', index);
    if (bytes !== null) {
      if (entry.kind === 'sound') card.append(make('audio', { controls: '', src: URL.createObjectURL(new Blob([bytes])) }));
      const save = make('button', {}, `bytes (${entry.file})`);
      save.addEventListener('click', () => download(entry.file, bytes));
      card.append(make('p', {}, save));
    }
    card.dataset.drawn = '1';
  }

  const whenSeen = new IntersectionObserver((seen) => {
    for (const { isIntersecting, target } of seen) {
      if (!isIntersecting || target.dataset.drawn) continue;
      whenSeen.unobserve(target);
      draw(target.dataset.archive, Number(target.dataset.index), target);
    }
  }, { rootMargin: '600px' });

  // What to do with the archive as a whole: undo and redo, downloads, and
  // mods or BPS patches to apply.
  async function archiveTools(name) {
    const state = await call(name, 'state');
    const button = (label, action, enabled = true) => {
      const made = make('button', { class: action }, label);
      made.disabled = !enabled;
      return made;
    };
    const undo = button('undo', 'undo', state.canUndo);
    const redo = button('redo', 'redo', state.canRedo);
    undo.addEventListener('click', async () => edited(name, await call(name, 'undo')));
    redo.addEventListener('click', async () => edited(name, await call(name, 'redo')));
    const save = button('download the archive', 'download-archive');
    save.addEventListener('click', async () => download(name, await call(name, 'archiveFile')));
    const mod = button('download a mod', 'download-mod', state.edited);
    mod.addEventListener('click', async () => download(`${stemOf(name)}.lbxmod`, await call(name, 'mod', false), 'application/json'));
    const reversible = button('a reversible mod', 'download-reversible', state.edited);
    reversible.addEventListener('click', async () => download(`${stemOf(name)}.lbxmod`, await call(name, 'mod', true), 'application/json'));
    const bps = button('a BPS patch', 'download-bps', state.edited);
    bps.addEventListener('click', async () => download(`${stemOf(name)}.bps`, await call(name, 'bps')));
    const preferLast = make('input', { type: 'checkbox', class: 'prefer-last' });
    const applyLabel = fileInput('apply mods or a BPS patch ', '.lbxmod,.json,.bps', 'apply-patches', async (files) => {
      const patches = [];
      for (const file of files) patches.push({ name: file.name, bytes: await bytesOf(file) });
      edited(name, await call(name, 'applyPatches', patches, preferLast.checked));
    }, true);
    return make('p', { class: 'tools' }, undo, ' ', redo, ' ', save, ' ', mod, ' ', reversible, ' ', bps, ' ', applyLabel, ' ',
                make('label', {}, preferLast, ' the later mod wins'));
  }

  async function show(name) {
    const stem = stemOf(name);
    const section = make('section', { class: 'archive', id: stem }, make('h2', {}, name));
    const error = await call(name, 'error');
    if (error) {
      section.append(make('p', { class: 'error' }, error));
      return section;
    }
    section.append(await archiveTools(name), make('div', { class: 'messages' }),
                   make('pre', { class: 'listing' }, await call(name, 'listing')));
    const size = await call(name, 'size');
    for (let index = 0; index < size; ++index) {
      const card = make('section', { class: 'entry', id: `${stem}-${index}`, 'data-archive': name, 'data-index': index },
        make('h3', {}, `${name}[${index}]`));
      section.append(card);
      whenSeen.observe(card);
    }
    return section;
  }

  // Later archives may hold the colours of earlier ones: all are shown anew,
  // and the edited one's messages kept.
  async function refresh(keepMessagesOf = null) {
    const kept = keepMessagesOf && document.getElementById(keepMessagesOf)?.querySelector('.messages');
    const at = window.scrollY;
    whenSeen.disconnect();
    const sections = [];
    for (const name of [...opened].sort()) {
      await call(name, 'forgetPalettes');
      sections.push(await show(name));
    }
    shown.replaceChildren(...sections);
    nav.replaceChildren(...[...opened].sort().flatMap((name) => [make('a', { href: '#' + stemOf(name) }, name), ' ']));
    if (kept) document.getElementById(keepMessagesOf)?.querySelector('.messages')?.replaceWith(kept);
    window.scrollTo(0, at);
    document.body.dataset.shown = String(Number(document.body.dataset.shown ?? 0) + 1);
  }

  async function open(files) {
    const archives = [...files].filter((file) => !/\.(lbxmod|json|bps|png|wav)$/i.test(file.name));
    if (archives.length < files.length)
      say(messages, 'Pictures and sounds go on the entry they replace, mods and patches on the archive they change; ' +
                    'only archives open on their own.');
    for (const file of archives) {
      await handOver(file.name, 'open', await bytesOf(file));
      opened.add(file.name);
    }
    await refresh();
  }

  const input = document.getElementById('files');
  input.addEventListener('change', () => {
    const files = [...input.files];
    input.value = '';
    open(files);
  });
  document.addEventListener('dragover', (event) => event.preventDefault());
  document.addEventListener('drop', (event) => {
    event.preventDefault();
    // A mod or BPS patch dropped on an archive's section applies to it.
    const section = event.target.closest('section.archive');
    const patches = [...event.dataTransfer.files].filter((file) => /\.(lbxmod|json|bps)$/i.test(file.name));
    if (section && patches.length > 0) {
      const apply = section.querySelector('input.apply-patches');
      apply.files = event.dataTransfer.files;
      apply.dispatchEvent(new Event('change'));
      return;
    }
    open([...event.dataTransfer.files]);
  });
  if ('serviceWorker' in navigator && location.protocol.startsWith('http'))
    navigator.serviceWorker.register('sw.js').catch(() => { /* the page works without it, online */ });
  call(null, 'ready').then(() => { document.body.dataset.ready = '1'; });
})();
