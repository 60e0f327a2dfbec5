#include "QtClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

std::optional<QString> QtClipboard::text()
{
    if (!qGuiApp)
        return std::nullopt;
    const QMimeData* data = QGuiApplication::clipboard()->mimeData(QClipboard::Clipboard);
    if (!data || !data->hasText())
        return std::nullopt;
    return data->text();
}

void QtClipboard::clear()
{
    if (qGuiApp)
        QGuiApplication::clipboard()->clear(QClipboard::Clipboard);
}

void QtClipboard::setText(const QString& text)
{
    if (qGuiApp)
        QGuiApplication::clipboard()->setText(text, QClipboard::Clipboard);
}
