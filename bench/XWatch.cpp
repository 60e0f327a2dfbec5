// Watches a program's windows from the outside, as the X server sees them, and times what the user sees:
// a window mapped and painted (its first damage), a repaint after a hand edit, a flyout after a click, a
// process or a key event after a click. Every figure is read off the monotonic clock when the event
// arrives, so it is as precise as this process is quick to be scheduled (about a millisecond).
//
//   bench_xwatch start [NAME=VALUE...] COMMAND [ARGS...]
//       starts COMMAND with NAME=VALUE in its environment (set here rather than through env(1), whose
//       own start would count against the program), prints "pid mapped_ms painted_ms" once its first window
//       is mapped and painted, then waits for it to end and exits with its status
//   bench_xwatch reload PID FILE FIRST SECOND COUNT
//       COUNT times, puts FIRST and SECOND in turn in the place of FILE (written beside it and renamed
//       over it, as editors save) and prints the milliseconds until PID's window is painted again
//   bench_xwatch flyout PID COUNT
//       COUNT times, clicks the last chip of PID's bar and prints the milliseconds until a second window
//       of PID is mapped and painted; a second click closes it again
//   bench_xwatch shell PID STAMP COUNT
//       COUNT times, clicks the last chip and prints the milliseconds until the time written to STAMP
//       by the process it started (bench_stamp, started as the login shell)
//   bench_xwatch keys PID COUNT
//       COUNT times, clicks the last chip with a window of its own in front and prints the milliseconds
//       until that window receives a key press
//   bench_xwatch point PID
//       puts the pointer on the middle of PID's window, or far from every window when PID is 0
//   bench_xwatch window PID
//       prints the id of PID's window

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <poll.h>
#include <set>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <xcb/damage.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace {

template<typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template<typename T>
Reply<T> adopt(T* reply)
{
    return Reply<T>(reply, &std::free);
}

double nowMs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

[[noreturn]] void fail(const char* message)
{
    std::fprintf(stderr, "bench_xwatch: %s\n", message);
    std::exit(2);
}

/// How long any one thing may take before the measurement is given up: a machine under load is slow,
/// but a program that never shows its window must not hang the suite.
constexpr double giveUpMs = 30000;

class Display
{
public:
    Display()
    {
        m_connection = xcb_connect(nullptr, nullptr);
        if (xcb_connection_has_error(m_connection))
            fail("no X display");
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
        const auto damage = xcb_get_extension_data(m_connection, &xcb_damage_id);
        if (!damage || !damage->present)
            fail("the X server has no DAMAGE extension");
        m_damageEvent = damage->first_event + XCB_DAMAGE_NOTIFY;
        adopt(xcb_damage_query_version_reply(m_connection, xcb_damage_query_version(m_connection, 1, 1),
                                             nullptr));
        m_pidAtom = atom("_NET_WM_PID");
        m_clientListAtom = atom("_NET_CLIENT_LIST");
    }
    ~Display() { close(); }

    void close()
    {
        if (m_connection)
            xcb_disconnect(m_connection);
        m_connection = nullptr;
    }

    xcb_connection_t* c() const { return m_connection; }
    xcb_window_t root() const { return m_root; }

    xcb_atom_t atom(const char* name)
    {
        const auto reply = adopt(xcb_intern_atom_reply(
            m_connection, xcb_intern_atom(m_connection, 0, std::strlen(name), name), nullptr));
        return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    }

    std::optional<pid_t> pidOf(xcb_window_t window)
    {
        const auto reply = adopt(xcb_get_property_reply(
            m_connection, xcb_get_property(m_connection, 0, window, m_pidAtom, XCB_ATOM_CARDINAL, 0, 1),
            nullptr));
        if (!reply || xcb_get_property_value_length(reply.get()) != 4)
            return std::nullopt;
        return pid_t(*static_cast<const uint32_t*>(xcb_get_property_value(reply.get())));
    }

    /// Tells about the window's mapping and painting from now on.
    void follow(xcb_window_t window)
    {
        if (!m_followed.insert(window).second)
            return;
        const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, window, XCB_CW_EVENT_MASK, &mask);
        xcb_damage_create(m_connection, xcb_generate_id(m_connection), window,
                          XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    }

    bool isMapped(xcb_window_t window)
    {
        const auto attributes = adopt(xcb_get_window_attributes_reply(
            m_connection, xcb_get_window_attributes(m_connection, window), nullptr));
        return attributes && attributes->map_state != XCB_MAP_STATE_UNMAPPED;
    }

    /// Every window of `pid` there is now, mapped or not, and every window created from now on.
    void followWindowsOf(pid_t pid)
    {
        const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection, m_root, XCB_CW_EVENT_MASK, &mask);
        // Window managers put managed windows into frames: two levels down from the root.
        for (const xcb_window_t top : children(m_root)) {
            for (const xcb_window_t window : children(top))
                if (pidOf(window) == pid)
                    follow(window);
            if (pidOf(top) == pid)
                follow(top);
        }
        xcb_flush(m_connection);
    }

    /// The mapped window of `pid` that the window manager lists, which for the programs measured here is
    /// the bar or the reference window.
    std::optional<xcb_window_t> mainWindowOf(pid_t pid)
    {
        const auto reply = adopt(xcb_get_property_reply(
            m_connection,
            xcb_get_property(m_connection, 0, m_root, m_clientListAtom, XCB_ATOM_WINDOW, 0, 4096), nullptr));
        if (!reply)
            return std::nullopt;
        const auto* windows = static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get()));
        for (int i = 0; i < xcb_get_property_value_length(reply.get()) / 4; ++i)
            if (pidOf(windows[i]) == pid)
                return windows[i];
        return std::nullopt;
    }

    struct Frame
    {
        int x = 0, y = 0, width = 0, height = 0;
    };
    Frame frameOf(xcb_window_t window)
    {
        const auto geometry =
            adopt(xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, window), nullptr));
        const auto place = adopt(xcb_translate_coordinates_reply(
            m_connection, xcb_translate_coordinates(m_connection, window, m_root, 0, 0), nullptr));
        if (!geometry || !place)
            fail("the window went away");
        return {place->dst_x, place->dst_y, geometry->width, geometry->height};
    }

    void movePointer(int x, int y)
    {
        xcb_test_fake_input(m_connection, XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME, m_root, int16_t(x),
                            int16_t(y), 0);
        sync();
    }

    void click()
    {
        xcb_test_fake_input(m_connection, XCB_BUTTON_PRESS, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_test_fake_input(m_connection, XCB_BUTTON_RELEASE, 1, XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
        xcb_flush(m_connection);
    }

    /// Waits until the server has handled everything sent so far.
    void sync()
    {
        adopt(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }

    /// The next event, or nothing once `deadline` (on the monotonic clock) has passed.
    Reply<xcb_generic_event_t> next(double deadline)
    {
        for (;;) {
            if (auto* event = xcb_poll_for_event(m_connection)) {
                // Reported once until subtracted: done for every report, so that none is ever missed.
                if ((event->response_type & 0x7f) == m_damageEvent) {
                    const auto* notify = reinterpret_cast<const xcb_damage_notify_event_t*>(event);
                    xcb_damage_subtract(m_connection, notify->damage, XCB_NONE, XCB_NONE);
                    xcb_flush(m_connection);
                }
                return adopt(event);
            }
            if (xcb_connection_has_error(m_connection))
                fail("the X connection broke");
            const double left = deadline - nowMs();
            if (left <= 0)
                return adopt<xcb_generic_event_t>(nullptr);
            pollfd socket{xcb_get_file_descriptor(m_connection), POLLIN, 0};
            ::poll(&socket, 1, int(left) + 1);
        }
    }

    /// The window painted, when the event says that one was.
    std::optional<xcb_window_t> damaged(const xcb_generic_event_t* event) const
    {
        if ((event->response_type & 0x7f) != m_damageEvent)
            return std::nullopt;
        return reinterpret_cast<const xcb_damage_notify_event_t*>(event)->drawable;
    }

private:
    std::vector<xcb_window_t> children(xcb_window_t window)
    {
        const auto tree =
            adopt(xcb_query_tree_reply(m_connection, xcb_query_tree(m_connection, window), nullptr));
        if (!tree)
            return {};
        const xcb_window_t* first = xcb_query_tree_children(tree.get());
        return {first, first + xcb_query_tree_children_length(tree.get())};
    }

    xcb_connection_t* m_connection = nullptr;
    xcb_window_t m_root = XCB_NONE;
    uint8_t m_damageEvent = 0;
    xcb_atom_t m_pidAtom = XCB_ATOM_NONE;
    xcb_atom_t m_clientListAtom = XCB_ATOM_NONE;
    std::set<xcb_window_t> m_followed;
};

uint8_t kind(const xcb_generic_event_t* event)
{
    return event->response_type & 0x7f;
}

/// Waits for a window of `pid` other than `except` to be mapped and then painted; its time, or nothing.
struct Shown
{
    xcb_window_t window = XCB_NONE;
    double mappedMs = 0;
    double paintedMs = 0;
};
std::optional<Shown> waitForWindow(Display& display, pid_t pid, xcb_window_t except, double deadline)
{
    std::optional<Shown> shown;
    while (auto event = display.next(deadline)) {
        if (kind(event.get()) == XCB_CREATE_NOTIFY) {
            const auto* created = reinterpret_cast<const xcb_create_notify_event_t*>(event.get());
            // Followed before it can be mapped, as a rule; whose it is shows at the mapping.
            display.follow(created->window);
            // A program quicker than this watcher on a busy machine may have been mapped, and even painted,
            // already: then what was missed counts as happening now, later than it did.
            if (!shown && display.isMapped(created->window) && display.pidOf(created->window) == pid) {
                std::fprintf(stderr, "bench_xwatch: window seen late, its times are upper bounds\n");
                return Shown{created->window, nowMs(), nowMs()};
            }
        } else if (kind(event.get()) == XCB_MAP_NOTIFY && !shown) {
            const auto* mapped = reinterpret_cast<const xcb_map_notify_event_t*>(event.get());
            if (mapped->window != except && mapped->event == mapped->window &&
                display.pidOf(mapped->window) == pid)
                shown = Shown{mapped->window, nowMs(), 0};
        } else if (const auto window = display.damaged(event.get());
                   window && shown && *window == shown->window) {
            shown->paintedMs = nowMs();
            return shown;
        }
    }
    return std::nullopt;
}

/// Waits for `window` to be painted.
std::optional<double> waitForPaint(Display& display, xcb_window_t window, double deadline)
{
    while (auto event = display.next(deadline)) {
        if (display.damaged(event.get()) == window)
            return nowMs();
    }
    return std::nullopt;
}

/// Waits for `window` to be unmapped.
bool waitForUnmap(Display& display, xcb_window_t window, double deadline)
{
    while (auto event = display.next(deadline)) {
        if (kind(event.get()) == XCB_UNMAP_NOTIFY &&
            reinterpret_cast<const xcb_unmap_notify_event_t*>(event.get())->window == window)
            return true;
    }
    return false;
}

/// Drops what has piled up, such as the repaints of a chip under the pointer, until nothing has come for
/// `quietMs` (or for at most five seconds).
void settle(Display& display, double quietMs)
{
    const double giveUp = nowMs() + 5000;
    while (display.next(std::min(nowMs() + quietMs, giveUp))) {
    }
}

int start(char** command)
{
    Display display;
    const uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(display.c(), display.root(), XCB_CW_EVENT_MASK, &mask);
    display.sync();

    const double started = nowMs();
    const pid_t pid = fork();
    if (pid < 0)
        fail("could not fork");
    if (pid == 0) {
        for (; *command && std::strchr(*command, '='); ++command)
            putenv(*command);
        execvp(command[0], command);
        _exit(127);
    }
    const auto shown = waitForWindow(display, pid, XCB_NONE, started + giveUpMs);
    if (!shown) {
        kill(pid, SIGTERM);
        fail("no window was mapped and painted");
    }
    std::printf("%d %.3f %.3f\n", int(pid), shown->mappedMs - started, shown->paintedMs - started);
    std::fflush(stdout);
    // Out of the way while the program is measured further: no more events, only its end.
    display.close();
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

xcb_window_t barOf(Display& display, pid_t pid)
{
    const auto window = display.mainWindowOf(pid);
    if (!window)
        fail("the program shows no window");
    return *window;
}

/// Puts the pointer over the last chip of the bar, 6 pixels inside its right end past the bar's
/// 12-pixel margin, and lets the hover repaint pass.
void pointAtLastChip(Display& display, xcb_window_t bar)
{
    const Display::Frame frame = display.frameOf(bar);
    display.movePointer(frame.x + frame.width - 12 - 6, frame.y + frame.height / 2);
    settle(display, 300);
}

int reload(pid_t pid, const std::string& file, const std::string& first, const std::string& second, int count)
{
    Display display;
    const xcb_window_t bar = barOf(display, pid);
    display.follow(bar);
    display.sync();
    settle(display, 200);
    for (int i = 0; i < count; ++i) {
        const std::string& source = i % 2 == 0 ? first : second;
        const std::string temporary = file + ".bench";
        const std::string copy = "cp '" + source + "' '" + temporary + "'";
        if (std::system(copy.c_str()) != 0)
            fail("could not copy the edited file");
        const double edited = nowMs();
        if (::rename(temporary.c_str(), file.c_str()) != 0)
            fail("could not put the edited file in place");
        const auto painted = waitForPaint(display, bar, edited + giveUpMs);
        if (!painted)
            fail("the bar did not show the edit");
        std::printf("%.3f\n", *painted - edited);
        std::fflush(stdout);
        settle(display, 200); // a rebuild may paint more than once
    }
    return 0;
}

int flyout(pid_t pid, int count)
{
    Display display;
    const xcb_window_t bar = barOf(display, pid);
    display.followWindowsOf(pid);
    pointAtLastChip(display, bar);
    for (int i = 0; i < count; ++i) {
        const double clicked = nowMs();
        display.click();
        const auto shown = waitForWindow(display, pid, bar, clicked + giveUpMs);
        if (!shown)
            fail("no flyout appeared");
        std::printf("%.3f\n", shown->paintedMs - clicked);
        std::fflush(stdout);
        display.click();
        if (!waitForUnmap(display, shown->window, nowMs() + giveUpMs))
            fail("the flyout did not close");
    }
    return 0;
}

std::optional<double> readStamp(const std::string& path, double deadline)
{
    while (nowMs() < deadline) {
        if (FILE* file = std::fopen(path.c_str(), "r")) {
            double ms = 0;
            const bool read = std::fscanf(file, "%lf", &ms) == 1;
            std::fclose(file);
            if (read)
                return ms;
        }
        usleep(500);
    }
    return std::nullopt;
}

int shell(pid_t pid, const std::string& stamp, int count)
{
    Display display;
    pointAtLastChip(display, barOf(display, pid));
    for (int i = 0; i < count; ++i) {
        std::remove(stamp.c_str());
        const double clicked = nowMs();
        display.click();
        const auto started = readStamp(stamp, clicked + giveUpMs);
        if (!started)
            fail("the chip started nothing");
        std::printf("%.3f\n", *started - clicked);
        std::fflush(stdout);
        usleep(100000); // the started process ends before the next click
    }
    return 0;
}

int keys(pid_t pid, int count)
{
    Display display;
    const xcb_window_t bar = barOf(display, pid);
    // A window in front that takes the keys, as the application the key combination is meant for.
    const xcb_window_t window = xcb_generate_id(display.c());
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(display.c())).data;
    const uint32_t values[] = {screen->black_pixel,
                               XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    xcb_create_window(display.c(), XCB_COPY_FROM_PARENT, window, display.root(), 0, 0, 200, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values);
    xcb_map_window(display.c(), window);
    display.sync();
    bool mapped = false;
    while (!mapped) {
        const auto event = display.next(nowMs() + giveUpMs);
        if (!event)
            fail("the key window was not mapped");
        mapped = kind(event.get()) == XCB_MAP_NOTIFY;
    }
    xcb_set_input_focus(display.c(), XCB_INPUT_FOCUS_POINTER_ROOT, window, XCB_CURRENT_TIME);
    pointAtLastChip(display, bar);
    for (int i = 0; i < count; ++i) {
        const double clicked = nowMs();
        display.click();
        std::optional<double> delivered;
        while (!delivered) {
            const auto event = display.next(clicked + giveUpMs);
            if (!event)
                fail("no key press arrived");
            if (kind(event.get()) == XCB_KEY_PRESS)
                delivered = nowMs();
        }
        std::printf("%.3f\n", *delivered - clicked);
        std::fflush(stdout);
        settle(display, 100); // the rest of the combination
    }
    return 0;
}

int point(pid_t pid)
{
    Display display;
    if (pid == 0) {
        display.movePointer(1, 1);
        return 0;
    }
    const Display::Frame frame = display.frameOf(barOf(display, pid));
    display.movePointer(frame.x + frame.width / 2, frame.y + frame.height / 2);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    if (mode == "start" && argc > 2)
        return start(argv + 2);
    if (mode == "reload" && argc == 7)
        return reload(std::atoi(argv[2]), argv[3], argv[4], argv[5], std::atoi(argv[6]));
    if (mode == "flyout" && argc == 4)
        return flyout(std::atoi(argv[2]), std::atoi(argv[3]));
    if (mode == "shell" && argc == 5)
        return shell(std::atoi(argv[2]), argv[3], std::atoi(argv[4]));
    if (mode == "keys" && argc == 4)
        return keys(std::atoi(argv[2]), std::atoi(argv[3]));
    if (mode == "point" && argc == 3)
        return point(std::atoi(argv[2]));
    if (mode == "window" && argc == 3) {
        Display display;
        std::printf("0x%x\n", barOf(display, std::atoi(argv[2])));
        return 0;
    }
    std::fprintf(stderr, "usage: see the comment at the top of bench/XWatch.cpp\n");
    return 2;
}
