'use strict';
// The zoom control and the animation player, shared by the gallery page and
// the web viewer. A page draws frames its own way and hands the player a
// function that draws frame n.
const lbxPage = (() => {
  const zoomKey = 'lbx-gallery-zoom';
  const defaultZoom = 3;
  const frameMilliseconds = 120;
  const speeds = ['0.25', '0.5', '1', '2', '4'];

  // Buttons 1x to 8x inside `container`; the choice is kept in localStorage,
  // which a page opened from a file may not have.
  function setupZoom(container) {
    const buttons = [];
    const setZoom = (zoom) => {
      document.documentElement.style.setProperty('--zoom', zoom);
      for (const button of buttons) button.classList.toggle('on', Number(button.dataset.zoom) === zoom);
      try { localStorage.setItem(zoomKey, String(zoom)); } catch (e) { /* the zoom is then not remembered */ }
    };
    container.append('zoom');
    for (let zoom = 1; zoom <= 8; ++zoom) {
      const button = document.createElement('button');
      button.dataset.zoom = String(zoom);
      button.textContent = zoom + 'x';
      button.addEventListener('click', () => setZoom(zoom));
      container.append(' ', button);
      buttons.push(button);
    }
    let remembered = defaultZoom;
    try { remembered = Number(localStorage.getItem(zoomKey)) || remembered; } catch (e) { /* as above */ }
    setZoom(remembered);
  }

  function button(action, label) {
    const made = document.createElement('button');
    made.dataset.act = action;
    made.textContent = label;
    return made;
  }

  // Plays `count` frames; without `loop` it stops on the last one, as the
  // game does. The state shows in the element's data-shown and data-state.
  class Player {
    constructor(element, count, loop, draw) {
      this.element = element;
      this.count = count;
      this.loop = loop;
      this.draw = draw;
      this.timer = null;
      const controls = document.createElement('div');
      controls.className = 'controls';
      this.playButton = button('play', 'play');
      this.at = document.createElement('span');
      this.at.className = 'at';
      this.speed = document.createElement('select');
      for (const speed of speeds) this.speed.add(new Option(speed, speed, speed === '1', speed === '1'));
      const speedLabel = document.createElement('label');
      speedLabel.append('speed ', this.speed);
      const back = button('back', 'back');
      const next = button('next', 'next');
      controls.append(back, this.playButton, next, this.at, speedLabel);
      element.append(controls);
      back.addEventListener('click', () => this.seek(this.shown - 1));
      next.addEventListener('click', () => this.seek(this.shown + 1));
      this.playButton.addEventListener('click', () => (this.timer === null ? this.play() : this.pause()));
      this.show(0);
      this.play();
    }
    get last() { return this.count - 1; }
    show(frame) {
      this.shown = ((frame % this.count) + this.count) % this.count;
      this.draw(this.shown);
      this.at.textContent = 'frame ' + this.shown + ' of ' + this.count;
      this.element.dataset.shown = String(this.shown);
    }
    seek(frame) {
      this.pause();
      this.show(frame);
    }
    play() {
      if (!this.loop && this.shown === this.last) this.show(0);
      this.playButton.textContent = 'pause';
      this.element.dataset.state = 'playing';
      this.schedule();
    }
    schedule() {
      this.timer = setTimeout(() => this.tick(), frameMilliseconds / Number(this.speed.value));
    }
    tick() {
      this.show(this.shown + 1);
      if (!this.loop && this.shown === this.last) this.pause();
      else this.schedule();
    }
    pause() {
      clearTimeout(this.timer);
      this.timer = null;
      this.playButton.textContent = 'play';
      this.element.dataset.state = 'stopped';
    }
  }

  return { setupZoom, Player };
})();
