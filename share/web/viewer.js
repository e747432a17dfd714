// The picture of a page, down to its own pixels. Tiles are fetched as they come into view; until
// they are there, coarser ones stand in their places.

import { element } from './dom.js';
import { t } from './text.js';

const tileSide = 256;
const maximumTiles = 240;
const isCalm = matchMedia('(prefers-reduced-motion: reduce)').matches;

class Tiles {
  constructor(onLoad) {
    this.onLoad = onLoad;
    this.pictures = new Map();
  }

  // The picture of an address if it is there; it is fetched otherwise.
  get(address, isWanted = true) {
    const known = this.pictures.get(address);
    if (known) {
      // The last ones used are the last in the map.
      this.pictures.delete(address);
      this.pictures.set(address, known);
      return known.complete && known.naturalWidth > 0 ? known : undefined;
    }
    if (!isWanted) return undefined;
    const picture = new Image();
    picture.addEventListener('load', this.onLoad);
    picture.src = address;
    this.pictures.set(address, picture);
    if (this.pictures.size > maximumTiles) {
      this.pictures.delete(this.pictures.keys().next().value);
    }
    return undefined;
  }
}

export class Viewer {
  constructor(place, job) {
    this.job = job;
    this.ink = '';
    this.canvas = element('canvas', { tabindex: 0, role: 'img' });
    this.cut = element('img', { class: 'cut', alt: '', hidden: true });
    this.stage = element('div', { class: 'stage' }, this.canvas, this.cut);
    this.zoomText = element('output', { 'aria-live': 'polite' });
    const button = (text, label, act) =>
      element('button', { type: 'button', title: label, 'aria-label': label, onclick: act }, text);
    this.tools = element(
      'div',
      { class: 'tools', role: 'toolbar', 'aria-label': t('Picture') },
      button('−', t('Farther'), () => this.zoom(1 / 1.5)),
      button('+', t('Nearer'), () => this.zoom(1.5)),
      button(t('Whole'), t('Whole page'), () => this.fit()),
      button('1:1', t('Pixel for pixel'), () => this.zoomTo(this.fullScale)),
      this.zoomText,
    );
    place.replaceChildren(this.tools, this.stage);
    this.tiles = new Tiles(() => this.draw());
    new ResizeObserver(() => this.resize()).observe(this.stage);
    this.listen();
  }

  // Screen pixels of CSS that a page pixel has at its full size.
  get fullScale() {
    return 1 / this.ratio;
  }

  // Page pixels may be higher than wide.
  get tall() {
    return this.page.xResolution / this.page.yResolution;
  }

  show(page) {
    this.page = page;
    this.canvas.setAttribute('aria-label', t('Page {0}', page.number));
    this.cut.src = page.cut ? `/api/v1/jobs/${this.job}/pages/${page.number}/cut.svg` : '';
    this.cut.hidden = true;
    this.resize();
    this.fit();
  }

  setInk(ink) {
    this.ink = ink;
    this.draw();
  }

  showCut(isShown) {
    this.cut.hidden = !isShown;
    this.draw();
  }

  // Takes a new size of the stage over. Called before anything is placed in it, too, since the
  // observer comes only after a frame.
  resize() {
    const ratio = devicePixelRatio || 1;
    const { clientWidth, clientHeight } = this.stage;
    const [oldWidth, oldHeight] = this.size ?? [clientWidth, clientHeight];
    if (this.size && ratio === this.ratio && clientWidth === oldWidth && clientHeight === oldHeight) {
      return;
    }
    this.ratio = ratio;
    this.size = [clientWidth, clientHeight];
    this.canvas.width = Math.round(clientWidth * ratio);
    this.canvas.height = Math.round(clientHeight * ratio);
    if (!this.page || this.scale === undefined) return;
    if (this.isFitted) {
      this.fit();
      return;
    }
    // The middle stays in the middle.
    this.left += (clientWidth - oldWidth) / 2;
    this.top += (clientHeight - oldHeight) / 2;
    this.draw();
  }

  fit() {
    this.resize();
    const { clientWidth, clientHeight } = this.stage;
    const { width, height } = this.page;
    this.scale = Math.min(clientWidth / width, clientHeight / (height * this.tall)) || 1;
    this.left = (clientWidth - width * this.scale) / 2;
    this.top = (clientHeight - height * this.tall * this.scale) / 2;
    this.isFitted = true;
    this.draw();
  }

  // The point (x, y) of the stage stays where it is; by default the middle.
  zoomTo(scale, x = this.stage.clientWidth / 2, y = this.stage.clientHeight / 2) {
    this.resize();
    const { width, height } = this.page;
    const least = Math.min(32 / Math.max(width, height), this.fullScale);
    const next = Math.min(Math.max(scale, least), this.fullScale * 16);
    const grown = next / this.scale;
    this.left = x - (x - this.left) * grown;
    this.top = y - (y - this.top) * grown;
    this.scale = next;
    this.isFitted = false;
    this.draw();
  }

  zoom(factor, x, y) {
    this.zoomTo(this.scale * factor, x, y);
  }

  move(x, y) {
    this.left += x;
    this.top += y;
    this.isFitted = false;
    this.draw();
  }

  address(level, column, row) {
    const { number, stamp } = this.page;
    const ink = this.ink === '' ? '' : `&ink=${this.ink}&tint=1`;
    return `/api/v1/jobs/${this.job}/pages/${number}/tile/${level}/${column}/${row}.png?stamp=${stamp}${ink}`;
  }

  draw() {
    if (this.isDue || !this.page) return;
    this.isDue = true;
    requestAnimationFrame(() => {
      this.isDue = false;
      this.drawNow();
    });
  }

  drawNow() {
    const context = this.canvas.getContext('2d');
    const { page, scale, ratio } = this;
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, this.canvas.width, this.canvas.height);
    context.setTransform(ratio * scale, 0, 0, ratio * scale * this.tall, ratio * this.left, ratio * this.top);
    context.fillStyle = '#fff';
    context.fillRect(0, 0, page.width, page.height);
    // The level whose pixels are as large as the screen's, or the next finer one.
    const wanted = Math.floor(Math.log2(1 / (scale * ratio)) + 0.01);
    const level = Math.min(Math.max(wanted, 0), page.levels - 1);
    context.imageSmoothingEnabled = scale * ratio < 2;
    this.drawLevel(context, page.levels - 1, true);
    for (let coarser = Math.min(level + 2, page.levels - 2); coarser > level; coarser -= 1) {
      this.drawLevel(context, coarser, false);
    }
    if (level < page.levels - 1) this.drawLevel(context, level, true);
    this.placeCut();
    this.zoomText.textContent = `${Math.round(scale * ratio * 100)} %`;
  }

  // Tiles that are in view. Those that are not wanted are drawn if they are there already.
  drawLevel(context, level, isWanted) {
    const { page, scale } = this;
    const side = tileSide * 2 ** level;
    const first = (start, step) => Math.max(0, Math.floor(-start / step));
    const last = (start, step, extent, count) =>
      Math.min(count - 1, Math.floor((extent - start) / step));
    const across = side * scale;
    const down = across * this.tall;
    const columns = Math.ceil(page.width / side);
    const rows = Math.ceil(page.height / side);
    const lastColumn = last(this.left, across, this.stage.clientWidth, columns);
    const lastRow = last(this.top, down, this.stage.clientHeight, rows);
    for (let row = first(this.top, down); row <= lastRow; row += 1) {
      for (let column = first(this.left, across); column <= lastColumn; column += 1) {
        const picture = this.tiles.get(this.address(level, column, row), isWanted);
        if (!picture) continue;
        const x = column * side;
        const y = row * side;
        context.drawImage(picture, x, y, Math.min(side, page.width - x), Math.min(side, page.height - y));
      }
    }
  }

  placeCut() {
    if (this.cut.hidden) return;
    const { style } = this.cut;
    style.left = `${this.left}px`;
    style.top = `${this.top}px`;
    style.width = `${this.page.width * this.scale}px`;
    style.height = `${this.page.height * this.scale * this.tall}px`;
  }

  listen() {
    const pointers = new Map();
    const at = (event) => {
      const box = this.stage.getBoundingClientRect();
      return { x: event.clientX - box.left, y: event.clientY - box.top };
    };
    const spread = () => {
      const [one, other] = [...pointers.values()];
      return {
        distance: Math.hypot(one.x - other.x, one.y - other.y),
        x: (one.x + other.x) / 2,
        y: (one.y + other.y) / 2,
      };
    };
    this.canvas.addEventListener('pointerdown', (event) => {
      this.canvas.setPointerCapture(event.pointerId);
      pointers.set(event.pointerId, at(event));
    });
    this.canvas.addEventListener('pointermove', (event) => {
      const before = pointers.get(event.pointerId);
      if (!before) return;
      const now = at(event);
      if (pointers.size === 2) {
        const old = spread();
        pointers.set(event.pointerId, now);
        const next = spread();
        this.move(next.x - old.x, next.y - old.y);
        if (old.distance > 0) this.zoom(next.distance / old.distance, next.x, next.y);
        return;
      }
      pointers.set(event.pointerId, now);
      this.move(now.x - before.x, now.y - before.y);
    });
    for (const kind of ['pointerup', 'pointercancel']) {
      this.canvas.addEventListener(kind, (event) => pointers.delete(event.pointerId));
    }
    this.canvas.addEventListener(
      'wheel',
      (event) => {
        // The page itself still scrolls; a picture zooms when it is in use or a key is held.
        if (!event.ctrlKey && document.activeElement !== this.canvas) return;
        event.preventDefault();
        const { x, y } = at(event);
        this.zoom(event.deltaY < 0 ? 1.2 : 1 / 1.2, x, y);
      },
      { passive: false },
    );
    this.canvas.addEventListener('keydown', (event) => this.key(event));
  }

  key(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) return;
    const step = isCalm ? 40 : 60;
    const actions = {
      ArrowLeft: () => this.move(step, 0),
      ArrowRight: () => this.move(-step, 0),
      ArrowUp: () => this.move(0, step),
      ArrowDown: () => this.move(0, -step),
      '+': () => this.zoom(1.5),
      '-': () => this.zoom(1 / 1.5),
      0: () => this.fit(),
      1: () => this.zoomTo(this.fullScale),
    };
    const action = actions[event.key];
    if (!action) return;
    event.preventDefault();
    action();
  }
}
