#include "BaseSettings.h"
#include "FileDirTools.h"
#include "FileNames.h"
#include "MessageLog.h"
#include "PageLinesView.h"
#include "PrivateNamespace.h"
#include "ProductHome.h"
#include "RegistryTools.h"
#include "ReportFragments.h"
#include "RunAsNobody.h"
#include "SettingsRepair.h"
#include "SupportCorvantaData.h"
#include "SupportCorvantaTab.h"
#include "SupportPermissionsData.h"
#include "SupportPermissionsTab.h"
#include "SupportRegistry.h"
#include "SupportRepairPreferencesTask.h"
#include "SupportTabs.h"
#include "SupportTaskManager.h"

#include <QAccessible>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#ifndef Q_OS_WIN
#include <sys/mount.h>
#endif

using namespace Qt::StringLiterals;

namespace {

// Answers each modal dialog as it shows and notes it in seen: a box as "title|text", by Yes when
// yes is "Yes", else by No or its one button; a file dialog by its title, a folder's cancelled,
// a file's given the path, typed in and accepted once the dialog has taken it in.
void answerDialogs(QTimer& timer, QStringList& seen, const QString& yes, const QString& path)
{
    QObject::connect(&timer, &QTimer::timeout, [&seen, yes, path] {
        if (auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
            if (!seen.contains(dialog->windowTitle()))
                seen << dialog->windowTitle();
            if (dialog->fileMode() == QFileDialog::Directory)
                dialog->reject();
            else if (dialog->selectedFiles() == QStringList{path})
                static_cast<QDialog*>(dialog)->accept();
            else
                dialog->findChild<QLineEdit*>(u"fileNameEdit"_s)->setText(path);
        } else if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            seen << box->windowTitle() + '|' + box->text();
            (box->button(QMessageBox::Yes)
                 ? box->button(yes == u"Yes"_s ? QMessageBox::Yes : QMessageBox::No)
                 : box->buttons().first())
                ->click();
        }
    });
    timer.start(20);
}

QPushButton* button(const QWidget* page, const QString& text)
{
    for (QPushButton* candidate : page->findChildren<QPushButton*>())
        if (candidate->text() == text)
            return candidate;
    return nullptr;
}

} // namespace

// The Corvanta and Permissions pages over one home in which the product is set up.
class tst_SupportPages : public QObject
{
    Q_OBJECT

    ProductHome m_home;
    QString home(const QString& relative) const { return m_home.path(relative); }
    QString data(const QString& relative) const { return m_home.dataFolder() + '/' + relative; }

private slots:
    void initTestCase()
    {
        QVERIFY(m_home.isValid());
        // Windows' own file dialogs are no widgets to type into.
        QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    }
    void init() { QVERIFY(m_home.prepare()); }

    // The viewer edition is no version of the product; the program is found in both folders.
    void pageText()
    {
        QVERIFY(QDir(data(u"temp"_s)).removeRecursively() && QFile::remove(data(u"userUUID.txt"_s))
                && QFile::remove(m_home.preferences()));
#ifdef Q_OS_WIN // FIFOs are Linux's; Windows' Uninstall list is pinned by tst_registrytools.
        QVERIFY(putFile(data(u"userUUID.txt"_s), {}));
        const QStringList fifos;
#else
        // No file the pages read is opened through a link to a FIFO; each is named in the log.
        const QStringList fifos{data(u"userUUID.txt"_s), m_home.preferences(),
                                home(u"system-config/mimeapps.list"_s),
                                home(u"system-data/applications/c.desktop"_s),
                                home(u".config/environment.d/50-fifo.conf"_s)};
        for (const QString& fifo : fifos)
            QVERIFY(QDir().mkpath(QFileInfo(fifo).absolutePath())
                    && ::mkfifo(QFile::encodeName(fifo + ".fifo").constData(), 0600) == 0
                    && QFile::link(fifo + ".fifo", fifo));
        for (const auto& [file, name] : {std::pair{"a", "Corvanta"}, {"b", "Corvanta Viewer"}})
            QVERIFY(putFile(home(u"system-data/applications/%1.desktop"_s.arg(file)),
                            "[Desktop Entry]\nExec=/opt/" + QByteArray(file) + "/run\nName=" + name
                                + "\nX-AppImage-Version=7.1\n"));
#endif
        SupportCorvantaData collector([](const QString& product) {
            return SupportCorvantaData::programFilesInstallations(
                product, {u"E:/"_s, u"C:/"_s}, [](const QString& path) { return path[0] == 'C'; });
        });
        SupportPermissionsData permissions;
        MessageLog log;
        std::unique_ptr<QThread> loading(QThread::create([&] {
            collector.load();
            permissions.load();
            environmentVariable(u"CORVANTA_HOME"_s);
            BaseSettings preferences(u"Corvanta"_s);
        }));
        loading->start();
        const bool ended = loading->wait(QDeadlineTimer(20000));
        while (!loading->wait(50)) {
#ifndef Q_OS_WIN // A reader held by a FIFO is let go by a writer, so that a fault fails, not hangs.
            for (const QString& fifo : fifos)
                ::close(
                    ::open(QFile::encodeName(fifo + ".fifo").constData(), O_WRONLY | O_NONBLOCK));
#endif
        }
        QVERIFY(ended);
        for (const QString& fifo : fifos)
            QVERIFY2(log.messages().contains("Not read: \"" + fifo + "\" is not a regular file."),
                     qPrintable(fifo));
        const QString indent(20, ' ');
        const QString versions = (windows ? QString() : "/opt/a - 7.1\n" + indent)
                                 + u"C:\\Program Files (x86)\\Corvanta\\Corvanta.exe\n"_s + indent
                                 + u"C:\\Program Files\\Corvanta\\Corvanta.exe"_s;
        QCOMPARE(htmlToPlainText(*collector.text()),
                 "Errors:\n1. Temporary Files folder not found.\n2. UUID file empty.\n\n"
                 "Application Data:   "
                     + m_home.dataFolder() + " \nTemporary Files:    " + data(u"temp"_s)
                     + " - Does Not Exist \nUUID:               \n\nVersions:           \n" + indent
                     + versions
                     + "\n\nFile Associations (Machine):\n\nFile Associations (User):\n.cvd      "
                       "\n\n");
    }

    void removals_data()
    {
        QTest::addColumn<QString>("setup");     // "records": the trash's records are read-only
        QTest::addColumn<QString>("action");    // "#link" or a button's text
        QTest::addColumn<QString>("answer");    // to the question before a permanent delete
        QTest::addColumn<QStringList>("boxes"); // "title|start of the text" of each box shown
        QTest::addColumn<QStringList>("gone");  // paths below DATA, the data folder
        for (const QString& folder : {u"DATA"_s, u"DATA/temp"_s})
            QTest::addRow("%s link, trashed", qPrintable(folder))
                << QString() << (folder.size() == 4 ? u"#deleteAppData"_s : u"#deleteTempFiles"_s)
                << QString() << QStringList() << QStringList{folder};
#ifndef Q_OS_WIN // Read-only trash records, mounts, links and names that are not UTF-8 are Linux's.
        const auto refused = [](const char* path) {
            return u"Could not put \"%1\" into the trash: Unable to create trashing info file"_s
                .arg(QString::fromUtf8(path));
        };
        QTest::newRow("temporary link, refused, kept")
            << u"records"_s << u"#deleteTempFiles"_s << u"No"_s
            << QStringList{"Delete for Good?|" + refused("DATA/temp")} << QStringList();
        // Links in it lead out: they go, never what they lead to.
        QTest::newRow("data link, a mount inside, deleted for good")
            << u"mount"_s << u"#deleteAppData"_s << u"Yes"_s
            << QStringList{u"Delete for Good?|Could not put \"DATA\" into the trash: It holds "
                           "another file system at \"DATA/temp/mounted here\"."_s,
                           u"Not Removed|\"DATA\" holds another file system at \"DATA/temp/"
                           "mounted here\"; it was left as it is."_s}
            << QStringList{u"DATA/userUUID.txt"_s, u"DATA/temp/session.tmp"_s,
                           u"DATA/linked folder"_s, u"DATA/dangling"_s};
        // The link's byte that is not UTF-8 reaches the file; the box shows it as the desktop does.
        QTest::newRow("permissions link, not UTF-8, refused, kept")
            << u"records"_s << u"#deletePathDATA/temp/not %FF UTF-8"_s << u"No"_s
            << QStringList{"Delete for Good?|" + refused("DATA/temp/not \uFFFD UTF-8")}
            << QStringList();
        // A link to nothing is listed and goes itself.
        QTest::newRow("permissions link, dangling link")
            << QString() << u"#deletePathDATA/dangling"_s << QString() << QStringList()
            << QStringList{u"DATA/dangling"_s};
        QTest::newRow("button, refused")
            << u"records"_s << u"Remove All Application Data"_s << QString()
            << QStringList{"Not Removed|" + refused("DATA")} << QStringList();
        QTest::newRow("data link, linked data folder")
            << u"linked"_s << u"#deleteAppData"_s << QString()
            << QStringList{u"Link Removed|\"DATA\" was a link: only the link was removed. Its "
                           "data is still in \"HOME/elsewhere\"."_s}
            << QStringList{u"DATA"_s};
#endif
    }

    // A mount namespace per row: what goes from either page goes from both, into the trash or
    // after the user is asked or told.
    void removals()
    {
        QFETCH(QString, setup);
        QFETCH(QString, action);
        QFETCH(QString, answer);
        QFETCH(QStringList, boxes);
        QFETCH(QStringList, gone);
        const QString folder = m_home.dataFolder();
        gone.replaceInStrings(u"DATA"_s, folder);
        const QString trash = trashFolder();
#ifndef Q_OS_WIN
        if (tinyFileSystem().isEmpty()) {
            QCOMPARE(runWithTinyFileSystem(u"removals:"_s + QTest::currentDataTag()), 0);
            return;
        }
        QVERIFY(putFile(home(u"outside/kept.txt"_s), "kept")
                && QFile::link(home(u"outside"_s), data(u"linked folder"_s))
                && QFile::link(home(u"nothing"_s), data(u"dangling"_s)));
        // Qt's listing passes such a name by; the permanent delete must not.
        const QByteArray notUtf8 = encodeFileName(data(u"temp/not "_s)) + "\xff UTF-8";
        QVERIFY(::close(::creat(notUtf8.constData(), 0600)) == 0);
        QVERIFY(setup == u"records"_s ? bindReadOnly(trash + u"/info"_s)
                : setup == u"mount"_s
                    ? QDir().mkpath(data(u"temp/mounted here"_s))
                          && bindFile(home(u"outside"_s), data(u"temp/mounted here"_s))
                    : setup != u"linked"_s
                          || (QDir().rename(folder, home(u"elsewhere"_s))
                              && QFile::link(home(u"elsewhere"_s), folder)));
        const auto cleanUp = qScopeGuard([&] {
            for (const QString& mount : {trash + u"/info"_s, data(u"temp/mounted here"_s)})
                ::umount(QFile::encodeName(mount).constData());
            removePermanently(home(QString()));
        });
#endif
        const auto before = treeSnapshot(home(QString()), gone + QStringList{trash});

        SupportDataTable table(new SupportDataMap);
        table->emplace(PermissionsDataKind, std::make_unique<SupportPermissionsData>());
        table->emplace(CorvantaDataKind, std::make_unique<SupportCorvantaData>());
        SupportTabs tabs(table, createSupportTab);
        QSignalSpy loaded(&tabs, &SupportTabs::signalLoadFinished);
        tabs.load();
        QVERIFY(loaded.wait(20000));
        SupportTab* permissionsPage = tabs.findChild<SupportPermissionsTab*>();
        SupportTab* corvantaPage = tabs.findChild<SupportCorvantaTab*>();

        QStringList seen;
        QTimer answerer;
        answerDialogs(answerer, seen, answer, {});
        if (action.startsWith('#')) {
            const QString link = QString(action).replace(u"DATA"_s, folder);
            (link.startsWith(u"#deletePath"_s) ? permissionsPage : corvantaPage)
                ->onLinkActivated(link);
        } else {
            button(corvantaPage, action)->click();
        }
        boxes.replaceInStrings(u"DATA"_s, folder).replaceInStrings(u"HOME"_s, home({}));
        for (qsizetype i = 0; i < std::min(seen.size(), boxes.size()); ++i)
            seen[i].truncate(boxes[i].size()); // a row gives the start of each box's text
        QCOMPARE(seen, boxes);

        QCOMPARE(treeSnapshot(home(QString()), {trash}), before);
#ifndef Q_OS_WIN
        QCOMPARE(::access(notUtf8.constData(), F_OK) != 0,
                 answer == u"Yes"_s || std::any_of(gone.cbegin(), gone.cend(), [&](auto& path) {
                     return decodeFileName(notUtf8).startsWith(path + '/');
                 }));
#endif
        QCOMPARE(trashList().count(folder), answer == u"Yes"_s ? 0 : gone.size());
        // Both pages show what is left.
        const QString permissions = htmlToPlainText(*permissionsPage->supportData()->text());
        for (const QString& item : std::as_const(gone))
            QVERIFY(!permissions.contains(item + u" OK"_s));
        QCOMPARE(htmlToPlainText(*corvantaPage->supportData()->text())
                     .contains(folder + u" - Does Not Exist"_s),
                 gone.contains(folder));
    }

    // The identifier is shown as text, whatever it holds. The page's other buttons are pressed in
    // the window by the end-to-end test.
    void removeAllApplicationDataWithTheFolderGone()
    {
        QVERIFY(putFile(data(u"userUUID.txt"_s), "<a href='#deleteAppData'>x</a> &amp;\r\n"));
        SupportCorvantaData collector;
        collector.load();
        QVERIFY(htmlToPlainText(*collector.text())
                    .contains(u"\nUUID:               <a href='#deleteAppData'>x</a> &amp;\n"_s));
        SupportCorvantaTab page(&collector);
        page.updateContent();
        QPushButton* removeAll = button(&page, u"Remove All Application Data"_s);
        QVERIFY(removeAll && QDir(m_home.dataFolder()).removeRecursively());
        QTest::mouseClick(removeAll, Qt::LeftButton);
        const QString listed = trashList();
        // Windows keeps no cache of the product's apart from its data folder.
        QCOMPARE(listed.count(home(QString())), windows ? 1 : 2);
        QVERIFY(listed.contains(' ' + m_home.preferences() + '\n'));
        QCOMPARE(listed.contains(' ' + home(u".cache/Corvanta"_s) + '\n'), !windows);
        QVERIFY(!removeAll->isEnabled() && !collector.hasAssociations());
        QCOMPARE(collector.errors(),
                 (QStringList{"Application Data folder not found.",
                              "Temporary Files folder not found.", "UUID file not found."}));
    }

    // The repair runs behind the task dialog and says what it did; a FIFO is not opened.
    void repairTask()
    {
        const QString file = m_home.preferences(), fifo = home(u"fifo.ini"_s);
        QStringList paths{file, file},
            expected{"Stored dates and times emptied in \"" + file + "\": 1.",
                     "Nothing in \"" + file + "\" needed repair."};
#ifndef Q_OS_WIN // FIFOs are Linux's.
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
        paths << fifo;
        expected << '"' + fifo + "\" is not a file, so it was left alone.";
#endif
        QStringList reports;
        for (const QString& path : std::as_const(paths)) {
            SupportTaskManager manager;
            QSignalSpy finished(&manager, &SupportTaskManager::signalFinished);
            manager.addTask(new SupportRepairPreferencesTask(path));
            manager.start();
            QVERIFY(finished.wait(10000));
            reports << manager.report();
        }
        QCOMPARE(reports, expected);
        QCOMPARE(fileBytes(file), ProductHome::repairedPreferences);
    }

    void repairSettingsFile_data()
    {
        QTest::addColumn<QString>("how");
        QTest::newRow("read-only file") << "file";
#ifndef Q_OS_WIN // Windows' read-only folders take new files; its disks are not made full here.
        QTest::newRow("read-only folder") << "folder";
        QTest::newRow("full file system") << "full";
#endif
    }

    // A failed write never leaves a shortened or empty file behind.
    void repairSettingsFile()
    {
        QFETCH(QString, how);
        QString file = m_home.preferences();
        const QString folder = QFileInfo(file).absolutePath();
        const auto unlock = qScopeGuard([&] {
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        });
#ifndef Q_OS_WIN
        if (how == u"full"_s) {
            // Again where a file system of 8 KiB is about to fill.
            const QString tiny = tinyFileSystem();
            if (tiny.isEmpty()) {
                QCOMPARE(runWithTinyFileSystem(u"repairSettingsFile:full file system"_s), 0);
                return;
            }
            QVERIFY(putFile(file = tiny + u"/Corvanta.ini"_s, ProductHome::preferencesText));
            // The associations file is written with the same care.
            qputenv("XDG_CONFIG_HOME", tiny.toUtf8());
            QVERIFY(putFile(tiny + u"/mimeapps.list"_s, ProductHome::mimeapps));
            QVERIFY(fillTinyFileSystem());
        } else
#endif
        {
            RUN_AS_NOBODY_WHEN_ROOT();
            QVERIFY(QFile::setPermissions(how == u"file"_s ? file : folder,
                                          QFile::ReadOwner | QFile::ExeOwner));
        }
        MessageLog log;
        QVERIFY(!::repairSettingsFile(file));
        QCOMPARE(fileBytes(file), ProductHome::preferencesText);
        QCOMPARE(QDir(QFileInfo(file).absolutePath()).entryList(QDir::Files).filter(u"Corvanta"_s),
                 QStringList{QFileInfo(file).fileName()});
        QCOMPARE(log.messages().filter(QRegularExpression(u"^Failed to"_s)).size(), 1);
        if (how == u"full"_s) {
            QVERIFY(!removeProductAssociation(u".cvd"_s, u"Corvanta"_s, false));
            QCOMPARE(fileBytes(QFileInfo(file).absolutePath() + u"/mimeapps.list"_s),
                     ProductHome::mimeapps);
        }
    }

    // Every entry below the product's folders once, links not followed, unreadable folders passed
    // by, only the product's preferences; its fast view looks exactly as another page's label.
    void walk()
    {
        RUN_AS_NOBODY_WHEN_ROOT();
        const QString markup = windows ? u"it's &amp; 100%.txt"_s : u"it's <a> & \"b\" 100%.txt"_s;
        QStringList lines{"a.txt Not Writable", markup + " OK", "temp OK", "temp/session.tmp OK",
                          "userUUID.txt OK"};
#ifndef Q_OS_WIN // Links and folders nobody may enter are Linux's.
        QVERIFY(putFile(home(u"outside/a.txt"_s), "a")
                && QFile::link(home(u"outside"_s), data(u"link"_s))
                && QFile::link(m_home.dataFolder(), data(u"loop"_s))
                && QFile::link(home(u"nothing"_s), data(u"dangling"_s))
                && QDir().mkpath(data(u"locked"_s)) // empty: nobody can still remove it
                && QFile::setPermissions(data(u"locked"_s), {}));
        lines << u"dangling Link"_s << u"link OK"_s << u"locked Not Writable"_s << u"loop OK"_s;
#endif
        const QString preferences = QFileInfo(m_home.preferences()).absolutePath();
        const QString recent = preferences + u"/corvanta-recent.list"_s;
        QVERIFY(QFile::rename(m_home.preferences(), recent)
                && putFile(preferences + u"/Other.ini"_s, "x") && putFile(data(u"a.txt"_s), "a")
                && putFile(data(markup), "z")
                && QFile::setPermissions(data(u"a.txt"_s), QFile::ReadOwner));
        SupportPermissionsData collector;
        collector.load();
        QCOMPARE(collector.errors(),
                 QStringList{u"%1 paths are not writable."_s.arg(windows ? 1 : 2)});
        QStringList expected = lines.replaceInStrings(QRegularExpression(u"^"_s), ' ' + data({}));
        expected << ' ' + m_home.dataFolder() + " OK" << ' ' + recent + " OK";
        expected.sort();
        QCOMPARE(htmlToPlainText(*collector.text())
                     .section(u"\n\n"_s, 1)
                     .split('\n', Qt::SkipEmptyParts),
                 expected);

        SupportCorvantaTab labelPage(&collector);
        SupportPermissionsTab page(&collector);
        for (SupportTab* tab : std::initializer_list<SupportTab*>{&labelPage, &page}) {
            tab->resize(1400, 400);
            tab->updateContent();
            tab->show();
            QVERIFY(QTest::qWaitForWindowExposed(tab));
        }
        const QImage shown = page.findChild<PageLinesView*>()->viewport()->grab().toImage();
        const QImage label = labelPage.findChild<QScrollArea*>()->viewport()->grab().toImage();
        const QRect both = shown.rect() & label.rect();
        QVERIFY(both.height() > 200);
        QCOMPARE(shown.copy(both), label.copy(both));
    }

    void removeThroughTheLabel_data()
    {
        QTest::addColumn<QString>("name");
        // Windows' names hold no quotes, angle brackets or line ends, and end in no blank.
        QTest::newRow("quotes and markup")
            << (windows ? "o'brien a&amp;b" : "o'brien say \"hi\" a&amp;b a<b>c");
        QTest::newRow("percent, hash, spaces")
            << (windows ? "  #1 100%25 %41  two" : "  #1 100%25 %41  two  spaces ");
#ifndef Q_OS_WIN // putFile names files through the C runtime's code page there. The Recycle Bin
                 // takes no path longer than 258 characters.
        QTest::newRow("non-ASCII") << "Grüße Ωmega ✓";
        QTest::newRow("newline") << "two\nlines";
        QTest::newRow("not UTF-8") << decodeFileName("caf\xe9 \xff.txt");
        QString longName = u"long"_s;
        while (m_home.dataFolder().size() + longName.size() < 3790)
            longName += '/' + QString(200, 'd');
        longName += '/' + QString(3998 - m_home.dataFolder().size() - longName.size(), 'f');
        QTest::newRow("4000 bytes") << longName;
#endif
    }

    // The path's "Remove" link, taken by keyboard, trashes only that path, recorded to be restored.
    void removeThroughTheLabel()
    {
        QFETCH(QString, name);
        const QString target = data(name);
        const QByteArray bytes = "bytes \0\xff of "_ba + name.toUtf8();
        QVERIFY(putFile(target, bytes) && putFile(data(u"sibling.txt"_s), "sibling"));
        const auto rest = treeSnapshot(m_home.dataFolder(), {target});
        SupportPermissionsData collector;
        collector.load();
        SupportPermissionsTab page(&collector);
        page.updateContent();
        page.show();
        page.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&page));
        auto* view = page.findChild<PageLinesView*>();
        view->setFocus();
        const QString html = *collector.text();
        const qsizetype links =
            html.left(html.indexOf(removeLink("deletePath" + target))).count(u"<a "_s);
        for (qsizetype i = 0; i <= links; ++i)
            QTest::keyClick(view, Qt::Key_Tab);
        // A screen reader reads the link in hand, and the path after it.
        QAccessibleTextInterface* reader =
            QAccessible::queryAccessibleInterface(view)->textInterface();
        int start = 0, end = 0;
        reader->selection(0, &start, &end);
        // A byte that is not UTF-8 shows as the replacement character, as trash-list shows it.
        const QString shown = displayFileName(target);
        QCOMPARE(reader->text(start, end + 1 + int(target.size())), "Remove " + shown);
        QTest::keyClick(view, Qt::Key_Return);

        QCOMPARE(treeSnapshot(m_home.dataFolder()), rest);
        QVERIFY(!htmlToPlainText(*collector.text()).contains(shown));
        const QString listed = trashList();
        QCOMPARE(listed.count(m_home.dataFolder()), 1);
        QVERIFY2(listed.contains(' ' + shown + '\n'), qPrintable(listed));
        const QString item = QFileInfo(target).fileName();
        QCOMPARE(fileBytes(trashFolder() + "/files/" + item), bytes);
#ifndef Q_OS_WIN // Wine's records name Unix paths.
        // Its record names the path's very bytes, which restore it, whatever they show as.
        const QByteArray record = fileBytes(trashFolder() + "/info/" + item + ".trashinfo");
        QVERIFY(QByteArray::fromPercentEncoding(record).contains("\nPath=" + encodeFileName(target)
                                                                 + '\n'));
#endif
    }

    // A cancelled dialog shows nothing; a chosen path is shown with its permissions.
    void checkDialogs()
    {
        SupportPermissionsData collector;
        SupportPermissionsTab page(&collector);
        page.updateContent();
        QVERIFY(QFile::setPermissions(m_home.preferences(),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup));
        const QString path = m_home.preferences();
        QStringList seen;
        QTimer answerer;
        answerDialogs(answerer, seen, {}, path);
        button(&page, u"Check Folder"_s)->click();
        button(&page, u"Check File"_s)->click();
        QCOMPARE(seen,
                 (QStringList{u"Choose Folder"_s, u"Choose File"_s,
                              "Corvanta Support|Path:\n" + path
                                  + "\n\nPermissions:\nReadOwner=1 WriteOwner=1 ExeOwner=0 "
                                    "ReadUser=1 WriteUser=1 ExeUser=0 ReadGroup=1 "
                                  // Windows gives everyone what its read-only attribute leaves.
                                  + (windows ? "WriteGroup=1 ExeGroup=0 ReadOther=1 WriteOther=1"
                                             : "WriteGroup=0 ExeGroup=0 ReadOther=0 WriteOther=0")
                                  + " ExeOther=0"}));
    }
};

QTEST_MAIN(tst_SupportPages)
#include "tst_supportpages.moc"
