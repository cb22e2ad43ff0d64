'use strict';
// Drives a headless GNOME Shell for Kivo's tests, which have no other way in: activates windows
// by title, says which one has the focus, and moves a virtual pointer as a user would.
const {Clutter, Gio, GLib} = imports.gi;
const Main = imports.ui.main;

const INTERFACE = `
<node>
  <interface name="app.kivo.TestDriver">
    <method name="Activate">
      <arg type="s" name="title" direction="in"/>
      <arg type="b" name="found" direction="out"/>
    </method>
    <method name="FocusedTitle">
      <arg type="s" name="title" direction="out"/>
    </method>
    <method name="MovePointer"/>
  </interface>
</node>`;

class Driver {
    Activate(title) {
        const actor = global.get_window_actors().find(a => a.meta_window.get_title() === title);
        if (!actor)
            return false;
        Main.overview.hide();
        Main.activateWindow(actor.meta_window);
        return true;
    }

    FocusedTitle() {
        const window = global.display.focus_window;
        return window ? window.get_title() || '' : '';
    }

    MovePointer() {
        if (!this._pointer) {
            const seat = Clutter.get_default_backend().get_default_seat();
            this._pointer = seat.create_virtual_device(Clutter.InputDeviceType.POINTER_DEVICE);
        }
        this._step = -(this._step || 5);
        this._pointer.notify_relative_motion(GLib.get_monotonic_time(), this._step, this._step);
    }
}

class Extension {
    enable() {
        this._object = Gio.DBusExportedObject.wrapJSObject(INTERFACE, new Driver());
        this._object.export(Gio.DBus.session, '/app/kivo/TestDriver');
        this._nameId = Gio.bus_own_name_on_connection(Gio.DBus.session, 'app.kivo.TestDriver',
            Gio.BusNameOwnerFlags.NONE, null, null);
    }

    disable() {
        Gio.bus_unown_name(this._nameId);
        this._object.unexport();
    }
}

function init() {
    return new Extension();
}
