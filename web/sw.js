'use strict';
// Served, the page keeps itself here and opens with the network off. It asks
// the network first, so that a new version arrives when there is one, and
// takes the kept copy when there is none. Only the page's own files pass:
// the page fetches nothing else, and no request carries an archive.
const KEPT = 'lbx-studio';
const PAGE = ['./', './index.html', './manifest.webmanifest', './icon.svg'];

self.addEventListener('install', (event) =>
  event.waitUntil(caches.open(KEPT).then((kept) => kept.addAll(PAGE)).then(() => self.skipWaiting())));
self.addEventListener('activate', (event) => event.waitUntil(self.clients.claim()));
self.addEventListener('fetch', (event) => {
  const { request } = event;
  if (request.method !== 'GET' || new URL(request.url).origin !== location.origin) return;
  event.respondWith(fetch(request)
    .then((answer) => {
      const copy = answer.clone();
      if (answer.ok) caches.open(KEPT).then((kept) => kept.put(request, copy));
      return answer;
    })
    .catch(() => caches.match(request, { ignoreSearch: true })));
});
