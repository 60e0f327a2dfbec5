#include "BarVisibility.h"

#include "app/Preferences.h"
#include "bar/BarPanel.h"
#include "bar/FlyoutController.h"
#include "platform/Platform.h"

#include <QEvent>
#include <QVariantAnimation>

BarVisibility::BarVisibility(Platform& platform, Preferences& preferences, QObject* parent)
    : QObject(parent)
    , m_platform(platform)
    , m_preferences(preferences)
{
    connect(&m_platform.pointerTicker(), &PointerTicker::sampled, this, &BarVisibility::tick);
}

void BarVisibility::attach(BarPanel* bar, FlyoutController* flyouts, std::function<bool()> editorOpen)
{
    m_bar = bar;
    m_flyouts = flyouts;
    m_editorOpen = std::move(editorOpen);
    m_bar->installEventFilter(this);
    m_state.pointerOnBar(m_bar->underMouse());
}

bool BarVisibility::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_bar && (event->type() == QEvent::Enter || event->type() == QEvent::Leave)) {
        m_state.pointerOnBar(event->type() == QEvent::Enter);
        updateTick();
    }
    return false;
}

void BarVisibility::start()
{
    m_started = true;
    updateTick();
}

void BarVisibility::updateTick()
{
    // Auto-hide is switched through this class while the bar runs, so the tick is started as soon as it
    // is needed. A hand edit of vantril.ini is only read at the next start: following it would mean
    // waking up to look at the file, which is what an idle bar must not do.
    PointerTicker& ticker = m_platform.pointerTicker();
    const bool needed = m_started && m_bar && m_state.needsTicks(m_preferences.autoHide());
    if (needed && !ticker.isActive())
        ticker.start(Visibility::tickMs); // a tick already running keeps its beat
    else if (!needed)
        ticker.stop();
}

void BarVisibility::tick(const PointerState& pointer)
{
    if (!m_bar)
        return;
    Visibility::Sample sample;
    sample.autoHide = m_preferences.autoHide();
    if (!m_state.needsTicks(sample.autoHide)) {
        updateTick(); // auto-hide went off behind our back: nothing to ask the server, and no more ticks
        return;
    }
    sample.pointer = pointer.position;
    sample.bar = m_bar->frameGeometry();
    if (BarPanel* flyout = m_flyouts ? m_flyouts->panel() : nullptr)
        sample.flyout = flyout->frameGeometry();
    sample.editorOpen = m_editorOpen && m_editorOpen();
    // The buttons only matter to a shown bar that may hide.
    sample.buttonPressed = sample.autoHide && m_state.isShown() && pointer.buttons != 0;
    switch (m_state.tick(sample)) {
    case Visibility::Action::Hide:
        hide(false);
        break;
    case Visibility::Action::Show:
        show();
        break;
    case Visibility::Action::None:
        break;
    }
}

void BarVisibility::fadeTo(double opacity, int milliseconds, std::function<void()> done)
{
    delete m_fade; // a fade in progress stops where it is, and the new one starts from there
    m_fade = new QVariantAnimation(this);
    m_fade->setStartValue(m_opacity);
    m_fade->setEndValue(opacity);
    m_fade->setDuration(milliseconds);
    connect(m_fade, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        m_opacity = value.toDouble();
        if (m_bar)
            m_platform.panelWindows().setOpacity(m_bar->winId(), m_opacity);
    });
    connect(m_fade, &QVariantAnimation::finished, this, std::move(done));
    m_fade->start();
}

void BarVisibility::hide(bool manual)
{
    if (!m_bar)
        return;
    if (m_flyouts)
        m_flyouts->closeFlyout();
    m_state.hidden(manual);
    updateTick();
    fadeTo(0.0, Visibility::fadeOutMs, [this] {
        // A show may have come in during the fade; then the bar stays as it is now.
        if (m_state.isShown() || !m_bar)
            return;
        m_platform.panelWindows().setClickThrough(m_bar->winId(), true);
        if (!m_platform.panelWindows().isCompositing())
            m_bar->setShapeHidden(true); // opacity means nothing without a compositor
    });
}

void BarVisibility::show()
{
    if (!m_bar)
        return;
    m_state.shown();
    updateTick();
    m_bar->setShapeHidden(false);
    m_platform.panelWindows().setClickThrough(m_bar->winId(), false);
    m_bar->raise();
    fadeTo(1.0, Visibility::fadeInMs, [] {});
}

void BarVisibility::toggleBar()
{
    if (m_state.isShown())
        hide(true);
    else
        show();
}

void BarVisibility::toggleAutoHide()
{
    const bool on = !m_preferences.autoHide();
    m_preferences.setAutoHide(on);
    if (m_state.autoHideToggled(on) == Visibility::Action::Show)
        show();
    updateTick();
}
