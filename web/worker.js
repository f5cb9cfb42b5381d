'use strict';
// The page's worker: the library and the modding core compiled to
// WebAssembly, answering the page's calls off its main thread, so that a big
// archive opens and an edit runs while the page stays responsive. Each call
// is { id, archive, method, args }; each answer { id, value } or { id, failure }.
// Archives live in one folder of the in-memory file system, where palette
// sources are found beside them as `lbx` finds them.
const ready = LbxModule({ printErr: (line) => postMessage({ said: line }) }).then((lbx) => {
  lbx.decodePng = lbxPng.decodePng;
  lbx.FS.mkdir('/archives');
  lbx.FS.chdir('/archives');
  return lbx;
});
const archives = new Map();

// Answers leave the worker as copies: the library's memory moves and is reused.
function detached(value, transfers) {
  if (ArrayBuffer.isView(value)) {
    const copy = value.slice();
    transfers.push(copy.buffer);
    return copy;
  }
  if (Array.isArray(value)) return value.map((each) => detached(each, transfers));
  if (value !== null && typeof value === 'object') {
    const plain = {};
    for (const [key, each] of Object.entries(value)) plain[key] = detached(each, transfers);
    return plain;
  }
  return value;
}

const calls = {
  ready: () => true,
  open(lbx, name, bytes) {
    archives.get(name)?.delete();
    lbx.FS.writeFile(name, bytes, { canOwn: true }); // the file system keeps these bytes, no copy
    archives.set(name, new lbx.Archive(name));
  },
  close(lbx, name) {
    archives.get(name)?.delete();
    archives.delete(name);
    lbx.FS.unlink(name);
  },
};

onmessage = async ({ data: { id, archive, method, args } }) => {
  const lbx = await ready;
  try {
    let value;
    if (calls[method]) value = calls[method](lbx, archive, ...args);
    else value = archives.get(archive)[method](...args);
    const transfers = [];
    postMessage({ id, value: detached(value, transfers) }, transfers);
  } catch (error) {
    postMessage({ id, failure: String(error.message ?? error) });
  }
};
