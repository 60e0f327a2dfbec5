#include "editor/ItemMenuModel.h"

#include <QTest>

class TestItemMenu : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void plainButtonOnTheSharedBar();
    void stacksLocksSetsAndHistory();
};

namespace {

using ItemMenuModel::Command;

QStringList titles(const QList<ItemMenuModel::Item>& items)
{
    QStringList out;
    for (const auto& item : items)
        out.append(item.isSeparator() ? QStringLiteral("—") : item.title);
    return out;
}

const ItemMenuModel::Item* find(const QList<ItemMenuModel::Item>& items, Command command)
{
    for (const auto& item : items) {
        if (item.command == command)
            return &item;
    }
    return nullptr;
}

ButtonSpec button(const QString& title, const QString& action = QStringLiteral("open"))
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    return spec;
}

} // namespace

void TestItemMenu::plainButtonOnTheSharedBar()
{
    ItemMenuModel::State state;
    state.button = button(QStringLiteral("Help"));
    state.presetNames = {QStringLiteral("Mail")};
    const auto items = ItemMenuModel::populate(state);
    QCOMPARE(titles(items),
             (QStringList{QStringLiteral("Edit “Help”…"), QStringLiteral("Lock"), QStringLiteral("Remove"),
                          QStringLiteral("—"), QStringLiteral("New stack…"), QStringLiteral("—"),
                          QStringLiteral("Lock all"), QStringLiteral("Unlock all"),
                          QStringLiteral("Add app preset"), QStringLiteral("Backups"), QStringLiteral("—"),
                          QStringLiteral("Auto-hide"), QStringLiteral("Launch at Login"),
                          QStringLiteral("Edit config file"), QStringLiteral("Hide bar"),
                          QStringLiteral("Quit Vantril")}));
    QCOMPARE(items.at(8).submenu.first().argument, QStringLiteral("Mail"));
    QVERIFY(!find(items, Command::Undo));
    QVERIFY(!find(items, Command::MoveToContext) && !find(items, Command::MoveToGlobal));
    QVERIFY(!find(items, Command::AddToStack));
    QVERIFY(!find(items, Command::CheckForUpdates));
}

void TestItemMenu::stacksLocksSetsAndHistory()
{
    ItemMenuModel::State state;
    state.button = button(QStringLiteral("Files"), QStringLiteral("group"));
    state.button.locked = true;
    state.contextName = QStringLiteral("Firefox");
    state.canUndo = true;
    state.appliedPresets = {QStringLiteral("Safari")};
    state.backups = {{QStringLiteral("/b/1.json"), QStringLiteral("label")}};
    state.autoHide = true;
    state.launchAtLogin = true;
    state.hasUpdater = true;
    auto items = ItemMenuModel::populate(state);
    QCOMPARE(items.at(1).title, QStringLiteral("Unlock"));
    QCOMPARE(find(items, Command::AddToStack)->argument, QStringLiteral("Files"));
    QCOMPARE(find(items, Command::MoveToContext)->title, QStringLiteral("Move to Firefox’s buttons"));
    QVERIFY(find(items, Command::Undo));
    QVERIFY(find(items, Command::CheckForUpdates));
    QCOMPARE(find(items, Command::AutoHide)->checked, std::optional<bool>(true));
    QCOMPARE(find(items, Command::LaunchAtLogin)->checked, std::optional<bool>(true));
    const QStringList all = titles(items);
    QVERIFY(all.contains(QStringLiteral("Remove app preset")));
    const auto backups = items.at(all.indexOf(QStringLiteral("Backups")));
    QCOMPARE(backups.submenu.at(2).submenu.first().command, Command::Restore);
    QCOMPARE(backups.submenu.at(2).submenu.first().argument, QStringLiteral("/b/1.json"));

    // A button of the front application's set moves back to the shared bar instead.
    state.inApplicationSet = true;
    items = ItemMenuModel::populate(state);
    QVERIFY(find(items, Command::MoveToGlobal));
    QVERIFY(!find(items, Command::MoveToContext));
}

QTEST_APPLESS_MAIN(TestItemMenu)
#include "tst_itemmenu.moc"
