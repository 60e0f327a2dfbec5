/* exported init */
// Tells the Vantril bar which application the focused window belongs to. Vantril runs through
// XWayland and sees only X11 windows by itself; GNOME Shell sees them all.
'use strict';

const {Gio, GLib, Meta, Shell} = imports.gi;

const SERVICE = 'io.github.vantril.Vantril';
const PATH = '/FrontApplication';
const INTERFACE = 'io.github.vantril.FrontApplication';
const WORK_WINDOWS = [Meta.WindowType.NORMAL, Meta.WindowType.DIALOG, Meta.WindowType.MODAL_DIALOG];

class Extension {
    enable() {
        this._barRuns = false;
        this._focusId = global.display.connect('notify::focus-window', () => this._report());
        // A bar that starts later learns the window in front at once, not at the next switch.
        this._watchId = Gio.bus_watch_name(Gio.BusType.SESSION, SERVICE, Gio.BusNameWatcherFlags.NONE,
            () => {
                this._barRuns = true;
                this._report();
            },
            () => {
                this._barRuns = false;
            });
    }

    disable() {
        global.display.disconnect(this._focusId);
        Gio.bus_unwatch_name(this._watchId);
        // The bar goes back to following X11 windows by itself.
        this._call('ReportsEnded', new GLib.Variant('(s)', ['gnome-shell']));
        this._barRuns = false;
    }

    _report() {
        const window = global.display.focus_window;
        // Panels, menus, notifications and the desktop are not where the user works.
        if (!window || window.skip_taskbar || !WORK_WINDOWS.includes(window.get_window_type()))
            return;
        const app = Shell.WindowTracker.get_default().get_window_app(window);
        // A window the tracker could not match gets a made-up id ("window:12"): no desktop entry.
        const appId = (app && !app.is_window_backed() ? app.get_id() : null) ||
            window.get_gtk_application_id() || '';
        // Strings only, the same as KWin's script sends.
        this._call('WindowActivated', new GLib.Variant('(sssss)', [
            'gnome-shell', appId, window.get_wm_class() || '', window.get_wm_class_instance() || '',
            String(window.get_pid()),
        ]));
    }

    _call(method, parameters) {
        if (!this._barRuns)
            return;
        Gio.DBus.session.call(SERVICE, PATH, INTERFACE, method, parameters, null,
            Gio.DBusCallFlags.NO_AUTO_START, -1, null, null);
    }
}

function init() {
    return new Extension();
}
