// The floor under every figure: a frameless window that stays above the others, drawn with Xlib alone.
// Its background is left to the program, as Qt leaves it, so that it counts as shown once it paints.

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <unistd.h>

int main()
{
    Display* display = XOpenDisplay(nullptr);
    if (!display)
        return 1;
    const int screen = DefaultScreen(display);
    XSetWindowAttributes attributes{};
    attributes.background_pixmap = None;
    attributes.event_mask = ExposureMask;
    const Window window =
        XCreateWindow(display, RootWindow(display, screen), 0, 0, 320, 40, 0, CopyFromParent, InputOutput,
                      CopyFromParent, CWBackPixmap | CWEventMask, &attributes);
    const long pid = getpid();
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_PID", False), XA_CARDINAL, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&pid), 1);
    const long noDecorations[5] = {2, 0, 0, 0, 0};
    const Atom motifHints = XInternAtom(display, "_MOTIF_WM_HINTS", False);
    XChangeProperty(display, window, motifHints, motifHints, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(noDecorations), 5);
    const long above = long(XInternAtom(display, "_NET_WM_STATE_ABOVE", False));
    XChangeProperty(display, window, XInternAtom(display, "_NET_WM_STATE", False), XA_ATOM, 32,
                    PropModeReplace, reinterpret_cast<const unsigned char*>(&above), 1);
    XStoreName(display, window, "xlibwindow");
    const GC gc = XCreateGC(display, window, 0, nullptr);
    XSetForeground(display, gc, 0x2b2b2b);
    XMapWindow(display, window);
    for (;;) {
        XEvent event;
        XNextEvent(display, &event);
        if (event.type == Expose)
            XFillRectangle(display, window, gc, 0, 0, 320, 40);
    }
}
