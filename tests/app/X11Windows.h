// SPDX-License-Identifier: GPL-2.0-or-later
#pragma once

// Finds and closes top-level windows on the X display, as a window manager would, and
// sends clicks and keys, so an end-to-end test can drive the real program under Xvfb.
#include <QByteArray>
#include <QPoint>
#include <X11/Xlib.h>

class X11Display {
public:
    X11Display() : display(XOpenDisplay(nullptr)) {
        // Windows come and go while the tree is searched (a menu closing, a dialog
        // going): a request about one already gone is not a failure of the test.
        XSetErrorHandler([](Display*, XErrorEvent*) { return 0; });
    }
    ~X11Display() {
        if (display)
            XCloseDisplay(display);
    }
    bool isOpen() const { return display != nullptr; }

    // The first mapped window, at any depth, whose name is title (0 if none).
    Window findWindow(const QByteArray& title) {
        XSync(display, False);
        return search(DefaultRootWindow(display), title);
    }

    // Asks the window to close, the way a close button in a title bar does.
    void requestClose(Window window) {
        XEvent event{};
        event.xclient.type = ClientMessage;
        event.xclient.window = window;
        event.xclient.message_type = XInternAtom(display, "WM_PROTOCOLS", False);
        event.xclient.format = 32;
        event.xclient.data.l[0] = long(XInternAtom(display, "WM_DELETE_WINDOW", False));
        event.xclient.data.l[1] = CurrentTime;
        XSendEvent(display, window, False, NoEventMask, &event);
        XFlush(display);
    }

    // A click of a mouse button at a point of the screen, delivered to the innermost
    // window there the way the server delivers a real one (the program sees a press
    // and a release).
    void click(const QPoint& onScreen, unsigned button) {
        const Window root = DefaultRootWindow(display);
        Window target = root, child = 0;
        int x = onScreen.x(), y = onScreen.y();
        while (XTranslateCoordinates(display, root, target, onScreen.x(), onScreen.y(), &x, &y,
                                     &child) &&
               child)
            target = child;
        for (const int type : {ButtonPress, ButtonRelease}) {
            XEvent event{};
            event.xbutton.type = type;
            event.xbutton.display = display;
            event.xbutton.window = target;
            event.xbutton.root = root;
            event.xbutton.x = x;
            event.xbutton.y = y;
            event.xbutton.x_root = onScreen.x();
            event.xbutton.y_root = onScreen.y();
            event.xbutton.button = button;
            event.xbutton.state = type == ButtonRelease ? (Button1Mask << (button - 1)) : 0;
            event.xbutton.same_screen = True;
            XSendEvent(display, target, True,
                       type == ButtonPress ? ButtonPressMask : ButtonReleaseMask, &event);
        }
        XFlush(display);
    }

    // A key pressed and released, sent to one of the program's windows; the program
    // hands it on to whichever of its windows has the focus (an open menu included).
    void key(Window focus, KeySym symbol, unsigned modifiers = 0) {
        for (const int type : {KeyPress, KeyRelease}) {
            XEvent event{};
            event.xkey.type = type;
            event.xkey.display = display;
            event.xkey.window = focus;
            event.xkey.root = DefaultRootWindow(display);
            event.xkey.keycode = XKeysymToKeycode(display, symbol);
            event.xkey.state = modifiers;
            event.xkey.same_screen = True;
            XSendEvent(display, focus, True, type == KeyPress ? KeyPressMask : KeyReleaseMask,
                       &event);
        }
        XFlush(display);
    }

private:
    Window search(Window window, const QByteArray& title) {
        char* name = nullptr;
        if (XFetchName(display, window, &name) && name) {
            const bool match = title == name;
            XFree(name);
            XWindowAttributes attributes{};
            if (match && XGetWindowAttributes(display, window, &attributes) &&
                attributes.map_state == IsViewable)
                return window;
        }
        Window root = 0, parent = 0;
        Window* children = nullptr;
        unsigned count = 0;
        if (!XQueryTree(display, window, &root, &parent, &children, &count))
            return 0;
        Window found = 0;
        for (unsigned i = 0; i < count && !found; ++i)
            found = search(children[i], title);
        if (children)
            XFree(children);
        return found;
    }

    Display* display;
};
