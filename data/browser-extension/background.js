// Reports the active tab of each browser window to Kivo through its native messaging host.
// Chromium-family browsers run this as a service worker, Firefox as a background script; the
// open native port keeps either alive. Which window has the focus is Kivo's to find out from
// the desktop: the browsers' own focus events are not reliable enough.
"use strict";

const api = globalThis.browser ?? globalThis.chrome;
const hostName = "app.kivo.browser_host";
const firstRetryMs = 1000;
const lastRetryMs = 30000;
// A port that stays up this long was a good connection: the next failure retries quickly again.
const settledMs = 10000;

let port = null;
let retryMs = firstRetryMs;
let retryTimer = null;
let settledTimer = null;

function send(message) {
  if (port === null) {
    return;
  }
  try {
    port.postMessage(message);
  } catch (error) {
    // The port closed under us; onDisconnect schedules the reconnection.
  }
}

function reportTab(tab) {
  if (!tab || !tab.active) {
    return;
  }
  send({
    type: "tab",
    windowId: tab.windowId,
    title: tab.title ?? "",
    url: tab.url ?? tab.pendingUrl ?? "",
    incognito: Boolean(tab.incognito),
  });
}

async function reportAll() {
  try {
    for (const tab of await api.tabs.query({ active: true })) {
      reportTab(tab);
    }
  } catch (error) {
    console.warn("Kivo: cannot list the tabs:", error);
  }
}

function scheduleReconnect() {
  if (retryTimer !== null) {
    return;
  }
  retryTimer = setTimeout(() => {
    retryTimer = null;
    connect();
  }, retryMs);
  retryMs = Math.min(retryMs * 2, lastRetryMs);
}

function connect() {
  try {
    port = api.runtime.connectNative(hostName);
  } catch (error) {
    port = null;
    scheduleReconnect();
    return;
  }
  port.onMessage.addListener((message) => {
    if (message && message.type === "report") {
      reportAll();
    }
  });
  port.onDisconnect.addListener(() => {
    port = null;
    clearTimeout(settledTimer);
    scheduleReconnect();
  });
  settledTimer = setTimeout(() => {
    retryMs = firstRetryMs;
  }, settledMs);
  reportAll();
}

api.tabs.onActivated.addListener(async ({ tabId }) => {
  try {
    reportTab(await api.tabs.get(tabId));
  } catch (error) {
    // The tab closed right after it was activated.
  }
});

api.tabs.onUpdated.addListener((tabId, change, tab) => {
  if ("title" in change || "url" in change) {
    reportTab(tab);
  }
});

api.windows.onRemoved.addListener((windowId) => {
  send({ type: "windowClosed", windowId });
});

connect();
