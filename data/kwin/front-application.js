// Loaded into KWin by Vantril while it runs: tells it which application each activated window belongs
// to, native Wayland windows included, which the X11 side of XWayland never sees.
// Every argument goes as a string: callDBus would pick a numeric type for a number by itself.

function report(window) {
    // Docks, panels, menus, notifications and the desktop are not where the user works.
    if (!window || !(window.normalWindow || window.dialog) || window.skipTaskbar)
        return;
    callDBus("io.github.vantril.Vantril", "/FrontApplication", "io.github.vantril.FrontApplication",
             "WindowActivated", "kwin", String(window.desktopFileName || ""),
             String(window.resourceClass || ""), String(window.resourceName || ""),
             String(window.pid || 0));
}

workspace.clientActivated.connect(report);
// The bar has just started: it wants the window in front now, not at the next switch.
report(workspace.activeClient);
