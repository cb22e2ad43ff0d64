// Kivo's KWin script: reports the active window to Kivo on the session bus, on every activation
// and on every change of the active window's caption. An empty report means no window is active
// (KWin announces one such moment before each activation). Written against both Plasma 5's
// names (clients) and Plasma 6's (windows).

const kivoService = "app.kivo.Kivo.ActiveWindow";
const kivoPath = "/app/kivo/Kivo/ActiveWindow";
const kivoInterface = "app.kivo.Kivo.ActiveWindow";

const isPlasma6 = workspace.windowActivated !== undefined;

function currentWindow() {
    return isPlasma6 ? workspace.activeWindow : workspace.activeClient;
}

// The caption as the window sets it: KWin's own caption adds " <2>" (and on X11 a left-to-right
// mark) to tell windows of one title apart. Plasma 6 has the plain one; on Plasma 5 the suffix
// is cut off.
function captionOf(window) {
    if (window.captionNormal !== undefined) {
        return String(window.captionNormal);
    }
    return String(window.caption).replace(/ <[0-9]+>\u200e?$/, "");
}

function captionChangeOf(window) {
    return window.captionNormalChanged || window.captionChanged;
}

// The resource names may come as byte arrays (KWin holds them so) or as strings: both travel as
// they are, and Kivo reads either.
function describe(window) {
    if (!window) {
        return {};
    }
    return {
        caption: captionOf(window),
        resourceClass: window.resourceClass,
        resourceName: window.resourceName,
        desktopFileName: String(window.desktopFileName || ""),
        pid: Number(window.pid) || 0,
        internalId: String(window.internalId),
    };
}

let followed = null;

function report() {
    callDBus(kivoService, kivoPath, kivoInterface, "Changed", describe(followed));
}

function follow(window) {
    if (followed) {
        try {
            captionChangeOf(followed).disconnect(report);
        } catch (error) {
            // The window is gone, and its connections with it.
        }
    }
    followed = window || null;
    if (followed) {
        captionChangeOf(followed).connect(report);
    }
    report();
}

(isPlasma6 ? workspace.windowActivated : workspace.clientActivated).connect(follow);
follow(currentWindow());
