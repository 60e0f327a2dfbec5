#pragma once

// The real program started with folders of its own and a buttons.json of the test's, and its bar found
// on screen: where each chip is, laid out by the program's own bar view in this process.

#include "TestSupport.h"
#include "X11Windows.h"
#include "config/Config.h"

#include <QDir>
#include <QHash>
#include <QRectF>
#include <QTemporaryDir>
#include <utility>

using Variables = QList<std::pair<QString, QString>>;

/// `variables` with the application in front taken to have no buttons of its own, so that the bar and
/// its menus are the same whichever window is active.
inline Variables withoutFrontApp(Variables variables = {})
{
    variables.prepend({u"VANTRIL_CONTEXT_APP"_s, u"none"_s});
    return variables;
}

inline BarConfig barOf(QList<ButtonSpec> buttons)
{
    return {std::move(buttons), std::nullopt, std::nullopt};
}

/// Folders of one test: the program's configuration folder and an XDG config home, inside a fresh
/// temporary folder, so that no test sees what another one saved.
class TestHome
{
public:
    TestHome() { QDir().mkpath(xdgConfigHome()); }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString configDir() const { return path(u"vantril"_s); }
    QString xdgConfigHome() const { return path(u"xdg"_s); }
    QString buttonsJson() const { return path(u"vantril/buttons.json"_s); }
    QString preferencesFile() const { return path(u"xdg/vantril/vantril.ini"_s); }
    QByteArray buttons() const { return readAll(buttonsJson()); }
    bool writeButtons(const QByteArray& bytes) const;
    /// The machine's environment with these folders, without its VANTRIL_ variables, and with `variables`.
    QProcessEnvironment environment(const Variables& variables = {}) const;

private:
    QTemporaryDir m_dir;
};

/// Where the chips of a configuration sit on a bar expanding upwards, and how wide that bar is, laid out
/// by the program's own bar view rather than by offsets copied from its code: a change of font, icon or
/// spacing moves the pointer along with the chips. The width on screen shows that the program drew it.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
};

/// With the front application's `context` after the separator.
BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context = {});

/// The program, started with `config` as its buttons.json. When the test fails, what the program logged
/// and what buttons.json holds are printed as it goes.
class RunningBar : public TestProcess
{
public:
    explicit RunningBar(const TestHome& home, const BarConfig& config = Config::defaults(),
                        const Variables& variables = withoutFrontApp());
    ~RunningBar() override;

    /// Waits for the bar on screen, as wide as its buttons.
    bool waitForBar();
    quintptr bar() const { return m_bar; }
    /// Waits until the bar is `width` wide; frame() is where it then is.
    bool waitForWidth(int width);
    /// Where the bar was when last looked at.
    QRect frame() const { return m_frame; }
    /// What buttons.json holds; nothing when it does not decode.
    BarConfig saved() const;
    /// Waits until buttons.json differs from `before` and decodes, then until the bar shows it.
    bool waitForSave(const QByteArray& before);

    QRectF chipRect(const QString& title) const
    {
        return m_layout.chips.value(title).translated(m_frame.topLeft());
    }
    QPoint chip(const QString& title) const { return chipRect(title).center().toPoint(); }
    /// The middle of the gap after chip `title`, where the drop marker goes.
    QPoint gapAfter(const QString& title) const
    {
        return {qRound(chipRect(title).right()) + 4, m_frame.y() + m_frame.height() / 2};
    }
    /// The grip, 14 pixels wide after the bar's 12 pixel margin, halfway up.
    QPoint grip() const { return {m_frame.x() + 12 + 7, m_frame.y() + m_frame.height() / 2}; }

    std::optional<quintptr> shownFlyout() const { return shownWindow(u"Vantril flyout"_s); }
    /// Taps chip `title` once no flyout is open, and waits for its flyout to be open with rows in it.
    std::optional<quintptr> openFlyout(const QString& title);
    /// Right-clicks at `global` and waits for the program's menu.
    bool openMenu(const QPoint& global);

private:
    QString m_buttonsJson;
    BarLayout m_layout;
    quintptr m_bar = 0;
    QRect m_frame;
};

/// The middle of the second row of a flyout of two: rows of one height between 8 pixel margins, 6 apart.
QPoint secondRowOf(const QRect& flyout);
