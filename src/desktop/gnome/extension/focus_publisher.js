// Publishes the focused window on the session bus for Kivo, the time tracker: its title, its
// application and its process, read again whenever the focus or the title changes.
const BUS_NAME = 'app.kivo.FocusedWindow';
const OBJECT_PATH = '/app/kivo/FocusedWindow';
const INTERFACE = `
<node>
  <interface name="app.kivo.FocusedWindow">
    <method name="Get">
      <arg type="s" name="title" direction="out"/>
      <arg type="s" name="appId" direction="out"/>
      <arg type="u" name="processId" direction="out"/>
    </method>
    <property name="Version" type="u" access="read"/>
    <signal name="Changed">
      <arg type="s" name="title"/>
      <arg type="s" name="appId"/>
      <arg type="u" name="processId"/>
    </signal>
  </interface>
</node>`;

// The window tracker knows the installed application of most windows; windows it cannot place
// get a made-up "window:N" application, so then the window's own names are the better guess.
function applicationIdOf(window) {
    const app = Shell.WindowTracker.get_default().get_window_app(window);
    if (app && !app.is_window_backed() && app.get_id())
        return app.get_id();
    return window.get_gtk_application_id() || window.get_sandboxed_app_id() ||
        window.get_wm_class() || '';
}

var FocusPublisher = class {
    constructor(version) {
        this._version = version;
        this._window = null;
        this._windowSignals = [];
        this._last = null;
    }

    enable() {
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, this);
        this._object.export(Gio.DBus.session, OBJECT_PATH);
        this._nameId = Gio.bus_own_name_on_connection(Gio.DBus.session, BUS_NAME,
            Gio.BusNameOwnerFlags.NONE, null, null);
        this._focusSignal = global.display.connect('notify::focus-window', () => this._follow());
        const tracker = Shell.WindowTracker.get_default();
        this._trackerSignal = tracker.connect('tracked-windows-changed', () => this._announce());
        this._follow();
    }

    disable() {
        global.display.disconnect(this._focusSignal);
        Shell.WindowTracker.get_default().disconnect(this._trackerSignal);
        this._forgetWindow();
        Gio.bus_unown_name(this._nameId);
        this._object.unexport();
        this._object = null;
        this._last = null;
    }

    Get() {
        return this._state();
    }

    get Version() {
        return this._version;
    }

    _forgetWindow() {
        for (const id of this._windowSignals)
            this._window.disconnect(id);
        this._windowSignals = [];
        this._window = null;
    }

    _follow() {
        this._forgetWindow();
        this._window = global.display.focus_window;
        if (this._window) {
            this._windowSignals = ['notify::title', 'notify::wm-class',
                'notify::gtk-application-id'].map(
                name => this._window.connect(name, () => this._announce()));
        }
        this._announce();
    }

    _state() {
        const window = this._window;
        if (!window)
            return ['', '', 0];
        const pid = window.get_pid();
        return [window.get_title() || '', applicationIdOf(window), pid > 0 ? pid : 0];
    }

    // Only real changes go out: the tracker and the window report more often than that.
    _announce() {
        const state = this._state();
        if (this._last && state.every((value, i) => value === this._last[i]))
            return;
        this._last = state;
        this._object.emit_signal('Changed', new GLib.Variant('(ssu)', state));
    }
};
