#pragma once

#include <QWidget>

class PanelWindows;

/// A borderless window for the bar or a flyout: above other windows, on every workspace, in no
/// taskbar, and never focused, so that clicking it leaves the user's window active.
class BarPanel : public QWidget
{
    Q_OBJECT

public:
    BarPanel(PanelWindows& windows, const QString& title);

    /// Puts `content` in the panel (the panel owns it) and sizes the panel to fit it.
    void setContent(QWidget* content);
    QWidget* content() const { return m_content; }
    /// The size the content wants.
    QSize fittingSize() const;
    /// Moves and sizes the panel; its size stays fixed for the window manager.
    void setFrame(const QRect& frame);
    /// Shows the panel with its window-manager properties, which an earlier hide has cleared.
    void showPanel();
    /// Without a compositor a transparent window still shows: an empty shape hides it in place.
    void setShapeHidden(bool hidden);

Q_SIGNALS:
    void moved();
    /// Once, after the panel's first paint has gone to the screen.
    void firstPainted();

protected:
    void moveEvent(QMoveEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void updateMask();

    PanelWindows& m_windows;
    QWidget* m_content = nullptr;
    bool m_shapeHidden = false;
    bool m_painted = false;
};
