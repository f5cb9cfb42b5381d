// PNG files dropped on the page, read as the tool reads them: an 8-bit
// indexed PNG as its indices and palette, any other as 8-bit RGBA (a palette
// and grey through their colours, transparency as alpha, 16 bits cut to their
// high byte). The decoding itself is the npm package's; what libpng would say
// first about a damaged file (it ends early, a critical chunk fails its CRC)
// is said here in the tool's words.
import { decode } from 'fast-png';

const SIGNATURE_SIZE = 8;
// A chunk: length(4) type(4) data(length) crc(4)
const CHUNK_FRAME = 12;
// IHDR's data: width(4) height(4) depth(1) colour type(1) ...
const WIDTH_AT = SIGNATURE_SIZE + 8;
const HEIGHT_AT = WIDTH_AT + 4;
const MOST_PIXELS = 2 ** 26;
const PALETTE_TYPE = 3;

const CRC_TABLE = (() => {
  const table = new Uint32Array(256);
  for (let n = 0; n < 256; ++n) {
    let c = n;
    for (let k = 0; k < 8; ++k) c = c & 1 ? 0xedb88320 ^ (c >>> 1) : c >>> 1;
    table[n] = c >>> 0;
  }
  return table;
})();

function crcOf(bytes, from, to) {
  let crc = 0xffffffff;
  for (let at = from; at < to; ++at) crc = CRC_TABLE[(crc ^ bytes[at]) & 0xff] ^ (crc >>> 8);
  return (crc ^ 0xffffffff) >>> 0;
}

// What is wrong with the file's chunks, or null.
function chunkProblem(bytes) {
  const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
  for (let at = SIGNATURE_SIZE; ;) {
    if (bytes.length - at < CHUNK_FRAME) return 'file ends early';
    const length = view.getUint32(at);
    const type = String.fromCharCode(...bytes.subarray(at + 4, at + 8));
    if (length > bytes.length - at - CHUNK_FRAME) return 'file ends early';
    const critical = (bytes[at + 4] & 0x20) === 0;
    if (critical && crcOf(bytes, at + 4, at + 8 + length) !== view.getUint32(at + 8 + length)) return `${type}: CRC error`;
    if (type === 'IEND') return null;
    at += CHUNK_FRAME + length;
  }
}

function sampleReader(image) {
  const { width, depth, channels, data } = image;
  if (depth === 16) return (pixel, channel) => data[pixel * channels + channel] >> 8;
  if (data.length >= width * image.height * channels) return (pixel, channel) => data[pixel * channels + channel];
  // Rows of samples below 8 bits, packed, each row from a whole byte.
  const stride = Math.ceil((width * channels * depth) / 8);
  const mask = (1 << depth) - 1;
  return (pixel, channel) => {
    const y = Math.floor(pixel / width);
    const bit = ((pixel - y * width) * channels + channel) * depth;
    return (data[y * stride + (bit >> 3)] >> (8 - depth - (bit & 7))) & mask;
  };
}

// Samples at their own depth, which transparency (tRNS) names.
function rawSample(image) {
  const { depth, channels, data } = image;
  return depth === 16 ? (pixel, channel) => data[pixel * channels + channel] : sampleReader(image);
}

function keyedOut(raw, pixel, transparency, samples) {
  for (let c = 0; c < samples; ++c) if (raw(pixel, c) !== transparency[c]) return false;
  return true;
}

function paletteBytes(palette) {
  const bytes = new Uint8Array(palette.length * 4);
  palette.forEach(([red, green, blue, alpha = 255], i) => bytes.set([red, green, blue, alpha], i * 4));
  return bytes;
}

function toRgba(image) {
  const { width, height, depth, channels, palette, transparency } = image;
  const count = width * height;
  const rgba = new Uint8Array(count * 4);
  const sample = sampleReader(image);
  const raw = rawSample(image);
  if (palette) {
    const colours = paletteBytes(palette);
    for (let pixel = 0; pixel < count; ++pixel) {
      const index = sample(pixel, 0);
      if (index * 4 < colours.length) rgba.set(colours.subarray(index * 4, index * 4 + 4), pixel * 4);
      else rgba[pixel * 4 + 3] = 255;
    }
    return rgba;
  }
  const colour = channels >= 3;
  const hasAlpha = channels === 2 || channels === 4;
  const scale = depth < 8 ? 255 / ((1 << depth) - 1) : 1;
  const keyed = !hasAlpha && transparency && transparency.length > 0;
  for (let pixel = 0; pixel < count; ++pixel) {
    const at = pixel * 4;
    for (let c = 0; c < 3; ++c) rgba[at + c] = Math.round(sample(pixel, colour ? c : 0) * scale);
    if (hasAlpha) rgba[at + 3] = sample(pixel, channels - 1);
    else rgba[at + 3] = keyed && keyedOut(raw, pixel, transparency, colour ? 3 : 1) ? 0 : 255;
  }
  return rgba;
}

// What the library's PNG layer asks of a file: { width, height, indexed,
// pixels, palette }, only { width, height } when it claims too many pixels,
// or { error } in the words the tool uses.
export function decodePng(bytes) {
  try {
    const problem = chunkProblem(bytes);
    if (problem) return { error: problem };
    const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    const width = view.getUint32(WIDTH_AT);
    const height = view.getUint32(HEIGHT_AT);
    if (width * height > MOST_PIXELS) return { width, height };
    const image = decode(bytes.slice());
    const indexed = image.palette !== undefined && image.depth === 8 && bytes[HEIGHT_AT + 5] === PALETTE_TYPE;
    if (indexed)
      return { width, height, indexed, pixels: Uint8Array.from(image.data), palette: paletteBytes(image.palette) };
    return { width, height, indexed, pixels: toRgba(image) };
  } catch (error) {
    return { error: String(error.message ?? error) };
  }
}
