'use strict';
// The gallery page: each player shows the frame files named in its
// data-frames, and a click on a frame below it shows that frame.
lbxPage.setupZoom(document.getElementById('zoom'));
for (const element of document.querySelectorAll('.player')) {
  const frames = element.dataset.frames.split('|');
  const image = element.querySelector('img');
  const player = new lbxPage.Player(element, frames.length, element.dataset.loop === '1', (frame) => {
    image.src = frames[frame];
  });
  element.parentElement.querySelectorAll('.strip img').forEach((thumb, frame) =>
    thumb.addEventListener('click', () => player.seek(frame)));
}
document.body.dataset.ready = '1';
