#include "FileDirTools.h"
#include "ProductHome.h"
#include "ReportFragments.h"
#include "RunAsNobody.h"
#include "SupportPermissionsData.h"
#include "SupportPermissionsTab.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QScopeGuard>
#include <QScrollArea>
#include <QTest>
#include <QTextBrowser>
#include <QTimer>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

// A page as every other one is: the collector's text in a label in a scroll area.
class LabelPage : public SupportTab
{
public:
    using SupportTab::SupportTab;
    void updateContent() override
    {
        if (!m_label)
            m_label = createPage(new QGridLayout);
        showText(m_label);
    }

private:
    QLabel* m_label = nullptr;
};

} // namespace

class tst_SupportPermissions : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QString data(const QString& relative) const { return m_home.dataFolder() + '/' + relative; }

private slots:
    void initTestCase() { QVERIFY(m_home.isValid()); }
    void init() { QVERIFY(m_home.prepare()); }

    void walk_data()
    {
        QTest::addColumn<QString>("setup");
        QTest::addColumn<QStringList>("lines"); // below the data folder unless absolute
        QTest::addColumn<QStringList>("errors");
        const QStringList usual{"", "temp OK", "temp/session.tmp OK", "userUUID.txt OK",
                                m_home.preferences() + " OK"};
        QTest::newRow("links and a loop")
            << "links" << QStringList{"link OK", "loop OK"} + usual << QStringList();
        QTest::newRow("preferences only")
            << "preferences"
            << QStringList{m_home.path(".config/Kelvanmoor/corvanta-recent.list OK")}
            << QStringList();
        QTest::newRow("read-only file, unreadable folder")
            << "denied"
            << QStringList{"a.txt Not Writable", "locked Not Writable", "z.txt OK"} + usual
            << QStringList{"2 paths are not writable."};
    }

    // Every entry below the product's folders, each once; links are not followed, unreadable
    // folders passed by.
    void walk()
    {
        QFETCH(QString, setup);
        QFETCH(QStringList, lines);
        QFETCH(QStringList, errors);
        if (setup == u"denied"_s)
            RUN_AS_NOBODY_WHEN_ROOT();
        const auto unlock = qScopeGuard([&] {
            QFile::setPermissions(data(u"locked"_s),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
        if (setup == u"links"_s) {
            QVERIFY(putFile(m_home.path(u"outside/a.txt"_s), "a"));
            QVERIFY(QFile::link(m_home.path(u"outside"_s), data(u"link"_s)));
            QVERIFY(QFile::link(m_home.dataFolder(), data(u"loop"_s)));
        } else if (setup == u"preferences"_s) {
            QVERIFY(QDir(m_home.dataFolder()).removeRecursively());
            QVERIFY(QFile::rename(m_home.preferences(),
                                  m_home.path(u".config/Kelvanmoor/corvanta-recent.list"_s)));
            QVERIFY(putFile(m_home.path(u".config/Kelvanmoor/Other.ini"_s), "x"));
        } else {
            QVERIFY(putFile(data(u"a.txt"_s), "a") && putFile(data(u"locked/inside.txt"_s), "i")
                    && putFile(data(u"z.txt"_s), "z"));
            QVERIFY(QFile::setPermissions(data(u"a.txt"_s), QFile::ReadOwner)
                    && QFile::setPermissions(data(u"locked"_s), {}));
        }
        SupportPermissionsData collector;
        collector.load();
        QCOMPARE(collector.errors(), errors);
        QStringList expected;
        for (const QString& line : lines)
            expected << ' '
                            + (line.isEmpty()         ? m_home.dataFolder() + " OK"
                               : line.startsWith('/') ? line
                                                      : data(line));
        expected.sort();
        const QString plain = htmlToPlainText(*collector.text());
        QCOMPARE(plain.section(u"\n\n"_s, errors.isEmpty() ? 0 : 1).split('\n', Qt::SkipEmptyParts),
                 expected);
    }

    void removeThroughTheLabel_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("quote") << "o'brien.txt";
        QTest::newRow("double quote") << "say \"hi\"";
        QTest::newRow("ampersand") << "a&amp;b";
        QTest::newRow("markup") << "a<b>c";
        QTest::newRow("percent") << "100%25 %41";
        QTest::newRow("hash") << "#1 design";
        QTest::newRow("spaces") << "  two  spaces ";
        QTest::newRow("newline") << "two\nlines";
        QTest::newRow("non-ASCII") << "Grüße Ωmega ✓";
        QString longName = u"long"_s;
        while (m_home.dataFolder().size() + longName.size() < 3790)
            longName += '/' + QString(200, 'd');
        longName += '/' + QString(3998 - m_home.dataFolder().size() - longName.size(), 'f');
        QTest::newRow("4000 bytes") << longName;
    }

    // The "Remove" link of exactly that path, activated from the keyboard in the real page,
    // puts only that path into the trash, from which it comes back unchanged.
    void removeThroughTheLabel()
    {
        QFETCH(QString, name);
        const QString target = data(name);
        QVERIFY(putFile(target, "bytes \0\xff of "_ba + name.toUtf8()));
        QVERIFY(putFile(data(u"sibling.txt"_s), "sibling"));
        const auto before = treeSnapshot(m_home.dataFolder());
        SupportPermissionsData collector;
        collector.load();
        SupportPermissionsTab page(&collector);
        page.updateContent();
        page.show();
        page.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&page));
        auto* view = page.findChild<QTextBrowser*>();
        view->setFocus();
        const QString html = *collector.text();
        const qsizetype links =
            html.left(html.indexOf(removeLink("deletePath" + target))).count(u"<a "_s);
        for (qsizetype i = 0; i <= links; ++i)
            QTest::keyClick(view, Qt::Key_Tab);
        QTest::keyClick(view, Qt::Key_Return);

        auto expected = before;
        expected.remove(target);
        QCOMPARE(treeSnapshot(m_home.dataFolder()), expected);
        QVERIFY(!view->toPlainText().contains(target));
        const QString listed = trashList();
        QCOMPARE(listed.count(m_home.dataFolder()), 1);
        QVERIFY2(listed.contains(' ' + target + '\n'), qPrintable(listed));
        QVERIFY(trashRestore(m_home.dataFolder()));
        QCOMPARE(treeSnapshot(m_home.dataFolder()), before);
    }

    // The list is shown by a text browser for speed; it looks exactly as the label of every other
    // page would show the same text.
    void looksAsALabel()
    {
        // A link to nothing is not writable, even for root, and so brings the errors block.
        QVERIFY(QFile::link(m_home.path(u"nothing"_s), data(u"dangling"_s)));
        QVERIFY(putFile(data(u"it's <a> & \"b\" 100%.txt"_s), "x"));
        SupportPermissionsData collector;
        collector.load();
        QCOMPARE(collector.errors(), QStringList{u"1 paths are not writable."_s});
        LabelPage labelPage(&collector);
        SupportPermissionsTab page(&collector);
        for (SupportTab* tab :
             {static_cast<SupportTab*>(&labelPage), static_cast<SupportTab*>(&page)}) {
            tab->resize(1400, 400);
            tab->updateContent();
            tab->show();
            QVERIFY(QTest::qWaitForWindowExposed(tab));
        }
        // The label's page has no buttons below, so its text area is taller.
        const QImage shown = page.findChild<QTextBrowser*>()->viewport()->grab().toImage();
        const QImage label = labelPage.findChild<QScrollArea*>()->viewport()->grab().toImage();
        QCOMPARE(shown, label.copy(shown.rect()));
    }

    void checkDialogs_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("path"); // empty: cancelled
        QTest::newRow("file") << "Check File" << m_home.preferences();
        QTest::newRow("folder") << "Check Folder" << m_home.dataFolder();
        QTest::newRow("cancelled") << "Check File" << QString();
    }

    void checkDialogs()
    {
        QFETCH(QString, button);
        QFETCH(QString, path);
        SupportPermissionsData collector;
        SupportPermissionsTab page(&collector);
        page.updateContent();
        QStringList seen;
        QTimer answer;
        // The path is typed into the file dialog, which is accepted once it has taken it in.
        connect(&answer, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                if (seen.isEmpty())
                    seen << dialog->windowTitle();
                if (path.isEmpty())
                    dialog->reject();
                else if (dialog->selectedFiles() == QStringList{path})
                    static_cast<QDialog*>(dialog)->accept();
                else
                    dialog->findChild<QLineEdit*>(u"fileNameEdit"_s)->setText(path);
            } else if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                seen << box->windowTitle() + '|' + box->text();
                box->accept();
            }
        });
        answer.start(50);
        for (QPushButton* candidate : page.findChildren<QPushButton*>()) {
            if (candidate->text() == button)
                candidate->click();
        }
        QStringList expected{button == u"Check File"_s ? u"Choose File"_s : u"Choose Folder"_s};
        if (!path.isEmpty())
            expected << "|Path:\n" + path + "\n\nPermissions:\n" + permissionsText(path, false);
        QCOMPARE(seen, expected);
    }
};

QTEST_MAIN(tst_SupportPermissions)
#include "tst_supportpermissions.moc"
