#pragma once

#include "editor/EditorServices.h"

#include <QHash>
#include <QStackedWidget>
#include <functional>
#include <optional>

class KeyField;
class QLabel;

/// The argument of a button, edited the way its kind needs: paths with file pickers, an application
/// list, script names, a key combination, free text. Each kind keeps its own field, so trying another
/// kind and coming back loses nothing.
class ArgumentPages : public QStackedWidget
{
    Q_OBJECT

public:
    explicit ArgumentPages(const EditorServices& services, QWidget* parent = nullptr);

    /// Shows the field for `kind`; kinds without a field of their own are edited as plain text.
    void showKind(const QString& kind);
    /// Fills the field of `kind` without showing it.
    void setText(const QString& kind, const QString& text);
    /// The argument of the shown kind: nothing for an empty field or a kind that takes none.
    std::optional<QString> argument() const;
    /// False only for a key combination that does not parse.
    bool acceptable() const;
    /// The form label for the shown kind's field; empty for kinds that take no argument.
    QString label() const;

    static bool takesArgument(const QString& kind);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void changed();

private:
    struct Page
    {
        QWidget* widget = nullptr;
        std::function<QString()> read;
        std::function<void(const QString&)> write;
        QString label;
        bool trims = true;
    };

    Page& page(const QString& kind);
    Page pathPage(bool files);
    Page applicationPage(const EditorServices& services);
    Page scriptPage(const EditorServices& services);
    Page keysPage();
    Page urlPage();
    Page textPage(const QString& label, const QString& placeholder);
    Page notePage(const QString& text);
    void updateKeyStatus();

    QHash<QString, Page> m_pages;
    QString m_kind;
    KeyField* m_keys = nullptr;
    QLabel* m_keyStatus = nullptr;
};
