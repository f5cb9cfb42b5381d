'use strict';
// The web viewer. Archives chosen or dropped are written into one folder of
// the library's in-memory file system, opened there by the library compiled
// to WebAssembly, and shown entry by entry, each drawn as it comes into view.
(async () => {
  const messages = document.getElementById('messages');
  const shown = document.getElementById('shown');
  const nav = document.getElementById('archives');
  const opened = new Map(); // file name -> { archive, section }

  const make = (tag, attributes = {}, ...children) => {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) element.setAttribute(name, value);
    element.append(...children);
    return element;
  };
  // The library's warnings (a palette source missing, say) come as lines on
  // its error stream.
  const say = (line) => messages.append(make('p', { class: 'note' }, line));

  const lbx = await LbxModule({ printErr: say });
  lbx.FS.mkdir('/archives');
  lbx.FS.chdir('/archives');
  lbxPage.setupZoom(document.getElementById('zoom'));

  const canvasOf = (width, height) =>
    make('canvas', { class: 'pix', width, height, style: `--w:${width};--h:${height}` });

  function paint(canvas, rgba) {
    if (rgba === null) return false;
    const image = new ImageData(new Uint8ClampedArray(rgba), canvas.width, canvas.height);
    canvas.getContext('2d').putImageData(image, 0, 0);
    return true;
  }

  function download(name, blob) {
    const link = make('a', { href: URL.createObjectURL(blob), download: name });
    link.click();
    setTimeout(() => URL.revokeObjectURL(link.href), 1000);
  }

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

  function pictures(archive, index, entry, card, stem) {
    const frame = (canvas, number) => paint(canvas, archive.frame(index, number));
    const pngButton = (canvas, number) => {
      const button = make('button', {}, 'PNG');
      button.addEventListener('click', () => canvas.toBlob((blob) =>
        download(`${stem}_${String(number()).padStart(3, '0')}.png`, blob)));
      return button;
    };
    if (entry.frames === 1) {
      const canvas = canvasOf(entry.width, entry.height);
      canvas.dataset.frame = '0';
      frame(canvas, 0);
      card.append(canvas, make('p', {}, pngButton(canvas, () => 0)));
      return;
    }
    const canvas = canvasOf(entry.width, entry.height);
    const player = make('div', { class: 'player' }, canvas);
    card.append(player);
    const playing = new lbxPage.Player(player, entry.frames, entry.loop, (number) => frame(canvas, number));
    player.querySelector('.controls').append(pngButton(canvas, () => playing.shown));
    card.append(make('p', { class: 'note' }, (entry.loop ? 'loops' : 'plays once, as it has no loop flag')
      + (entry.delta ? '; frames that build on the one before are shown drawn over it, as the game shows them' : '')));
    const strip = make('details', { class: 'strip' }, make('summary', {}, `${entry.frames} frames`));
    strip.addEventListener('toggle', () => {
      if (!strip.open || strip.dataset.drawn) return;
      for (let number = 0; number < entry.frames; ++number) {
        const still = canvasOf(entry.width, entry.height);
        still.dataset.frame = String(number);
        frame(still, number);
        still.addEventListener('click', () => playing.seek(number));
        strip.append(still);
      }
      strip.dataset.drawn = '1';
    });
    card.append(strip);
  }

  function fonts(archive, index, entry, card) {
    entry.fonts.forEach((face, number) => {
      const sheet = archive.glyphs(index, number);
      const figure = make('figure');
      if (sheet.error) figure.append(make('p', { class: 'error' }, sheet.error));
      else paint(figure.appendChild(canvasOf(sheet.width, sheet.height)), sheet.rgba);
      const lines = [];
      for (let row = 0; row < 256; row += 16)
        lines.push(row.toString(16).padStart(2, '0') + ': ' + face.widths.slice(row, row + 16).join(' '));
      figure.append(make('figcaption', {}, `font ${number}, height ${face.height}`),
        make('details', {}, make('summary', {}, 'widths'), make('pre', {}, lines.join('\n'))));
      card.append(figure);
    });
  }

  // Everything of one entry; called when its card comes near the screen.
  function draw(archive, index, card) {
    const entry = archive.describe(index);
    const stem = entry.file ? entry.file.replace(/\.[^.]*$/, '') : `${archive.stem()}_${index}`;
    card.dataset.kind = entry.kind ?? '';
    card.append(make('pre', {}, entry.info ?? ''));
    if (entry.error) card.append(make('p', { class: 'error' }, entry.error));
    if (entry.frames > 0) pictures(archive, index, entry, card, stem);
    if (entry.palette) card.append(...swatch(entry.palette));
    if (entry.fonts) fonts(archive, index, entry, card);
    if (entry.rows) card.append(make('ol', { class: 'rows', start: '0' }, ...entry.rows.map((row) => make('li', {}, row))));
    const bytes = archive.bytes(index);
    if (bytes !== null) {
      const blob = new Blob([bytes.slice()]);
      if (entry.kind === 'sound') card.append(make('audio', { controls: '', src: URL.createObjectURL(blob) }));
      const save = make('button', {}, `bytes (${entry.file})`);
      save.addEventListener('click', () => download(entry.file, blob));
      card.append(make('p', {}, save));
    }
    card.dataset.drawn = '1';
  }

  const whenSeen = new IntersectionObserver((seen) => {
    for (const { isIntersecting, target } of seen) {
      if (!isIntersecting || target.dataset.drawn) continue;
      whenSeen.unobserve(target);
      const { archive } = opened.get(target.dataset.archive);
      draw(archive, Number(target.dataset.index), target);
    }
  }, { rootMargin: '600px' });

  function show(name) {
    const { archive } = opened.get(name);
    const stem = archive.stem();
    const section = make('section', { class: 'archive', id: stem }, make('h2', {}, name));
    const error = archive.error();
    if (error) {
      section.append(make('p', { class: 'error' }, error));
      return section;
    }
    section.append(make('pre', { class: 'listing' }, archive.listing()));
    for (let index = 0; index < archive.size(); ++index) {
      const card = make('section', { class: 'entry', id: `${stem}-${index}`, 'data-archive': name, 'data-index': index },
        make('h3', {}, `${name}[${index}]`));
      section.append(card);
      whenSeen.observe(card);
    }
    return section;
  }

  // Later archives may hold the colours of earlier ones: all are shown anew.
  async function open(files) {
    for (const file of files) {
      const bytes = new Uint8Array(await file.arrayBuffer());
      opened.get(file.name)?.archive.delete();
      lbx.FS.writeFile(file.name, bytes, { canOwn: true }); // the file system keeps these bytes, no copy
      opened.set(file.name, { archive: new lbx.Archive(file.name) });
    }
    whenSeen.disconnect();
    shown.replaceChildren();
    nav.replaceChildren();
    for (const name of [...opened.keys()].sort()) {
      opened.get(name).archive.forgetPalettes();
      shown.append(show(name));
      nav.append(make('a', { href: '#' + opened.get(name).archive.stem() }, name), ' ');
    }
  }

  const input = document.getElementById('files');
  input.addEventListener('change', () => open([...input.files]));
  document.addEventListener('dragover', (event) => event.preventDefault());
  document.addEventListener('drop', (event) => {
    event.preventDefault();
    open([...event.dataTransfer.files]);
  });
  document.body.dataset.ready = '1';
})();
