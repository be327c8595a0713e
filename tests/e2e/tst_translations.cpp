#include "BasicTextProcessor.h"
#include "SupportApplication.h"
#include "SupportMainWindow.h"
#include "TestEnvironment.h"
#include "XvfbServer.h"

#include <QDialogButtonBox>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

const char childVariable[] = "TST_TRANSLATIONS_CHILD";

// The child: the application and its window as the program builds them, in the language of the
// child's environment. Prints what the user reads, one group a line.
int printUserTexts(int argc, char** argv)
{
    SupportApplication application(argc, argv);
    const SupportMainWindow window;
    QStringList menus;
    for (const QAction* menu : window.menuBar()->actions())
        menus << menu->text();
    QStringList fileEntries;
    for (const QAction* entry : window.menuBar()->actions().constFirst()->menu()->actions())
        fileEntries << entry->text();
    const QDialogButtonBox buttons(QDialogButtonBox::Cancel);
    const QStringList lines{menus.join('|'), fileEntries.join('|'),
                            BasicTextProcessor::formatBytes(1),
                            buttons.button(QDialogButtonBox::Cancel)->text()};
    std::fputs(qPrintable(lines.join('\n') + '\n'), stdout);
    return 0;
}

const char* const languageVariables[] = {"LANG", "LC_ALL", "LC_MESSAGES", "LANGUAGE"};

// Gives the programs this process starts the language of LANG alone, as long as it lives.
class ChildrenLanguage
{
public:
    explicit ChildrenLanguage(const QString& lang)
        : m_saved(QProcessEnvironment::systemEnvironment())
    {
        for (const char* name : languageVariables)
            qunsetenv(name);
        qputenv("LANG", lang.toUtf8());
    }
    ~ChildrenLanguage()
    {
        for (const char* name : languageVariables) {
            if (m_saved.contains(QString::fromLatin1(name)))
                qputenv(name, m_saved.value(QString::fromLatin1(name)).toUtf8());
            else
                qunsetenv(name);
        }
    }

private:
    QProcessEnvironment m_saved;
};

} // namespace

// The programs speak the language of LANG where they have a translation for it, with Qt's own
// dialogs in the same language, while the report keeps its English labels.
class tst_Translations : public QObject
{
    Q_OBJECT

private slots:
    void userTextsFollowLang_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("expected");
        const QString german = u"Datei|Bearbeiten|Hilfe\n"
                               "Bericht speichern...|Bericht per E-Mail senden...|Beenden\n"
                               "1 Byte\nAbbrechen\n"_s;
        const QString english = u"File|Edit|Help\nSave Report...|Email Report...|Quit\n"
                                "1 byte\nCancel\n"_s;
        QTest::newRow("German") << u"de_DE.UTF-8"_s << german;
        QTest::newRow("German in Austria") << u"de_AT.UTF-8"_s << german;
        QTest::newRow("C") << u"C"_s << english;
        // Qt has French texts, the program has none: nothing may mix two languages.
        QTest::newRow("French, not translated") << u"fr_FR.UTF-8"_s << english;
    }

    void userTextsFollowLang()
    {
        QFETCH(QString, lang);
        QFETCH(QString, expected);
        const ChildrenLanguage language(lang);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(childVariable), u"1"_s);
        environment.insert(u"QT_QPA_PLATFORM"_s, u"offscreen"_s);
        QProcess child;
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(QCoreApplication::applicationFilePath(), {});
        QVERIFY(child.waitForFinished(30000));
        QCOMPARE(child.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(child.readAllStandardOutput()), expected);
    }

    void saveDialogFollowsLang_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QString>("caption");
        // xdotool cannot match the "ä" of the window name, so the caption is matched up to it.
        QTest::newRow("German") << u"de_DE.UTF-8"_s << u"^Ordner ausw"_s;
        QTest::newRow("C") << u"C"_s << u"^Select Folder$"_s;
    }

    // The real window: File > Save Report... opens the folder dialog with its caption translated.
    void saveDialogFollowsLang()
    {
        QFETCH(QString, lang);
        QFETCH(QString, caption);
        TestEnvironment home;
        const ChildrenLanguage language(lang);
        XvfbServer x;
        QVERIFY2(x.isRunning(), "Xvfb did not start");
        const QString window = x.startMainWindow();
        QVERIFY2(!window.isEmpty(), "the main window never appeared");
        const auto dialogOpen = [&] {
            if (x.visibleWindows(caption).isEmpty())
                x.keys({u"Down"_s, u"Return"_s}, window);
            return !x.visibleWindows(caption).isEmpty();
        };
        QVERIFY2(QTest::qWaitFor(dialogOpen, 20000), qPrintable(caption));
    }

    void reportProgramFollowsLang_data()
    {
        QTest::addColumn<QString>("lang");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QStringList>("mentions");
        QTest::newRow("German help")
            << u"de_DE.UTF-8"_s << QStringList{u"--help"_s}
            << QStringList{u"Diese Hilfe anzeigen und beenden."_s, u"\nExit-Status:\n"_s};
        // Support reads every report by its labels, whatever the user's language.
        QTest::newRow("German report")
            << u"de_DE.UTF-8"_s << QStringList()
            << QStringList{u"Generated: "_s, u"\nNo display server could be reached"_s,
                           u"\nOperating System:   "_s};
    }

    void reportProgramFollowsLang()
    {
        QFETCH(QString, lang);
        QFETCH(QStringList, arguments);
        QFETCH(QStringList, mentions);
        TestEnvironment home;
        const ChildrenLanguage language(lang);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"DISPLAY"_s, u"WAYLAND_DISPLAY"_s, u"QT_QPA_PLATFORM"_s})
            environment.remove(name);
        QProcess program;
        program.setProcessEnvironment(environment);
        program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        program.start(QStringLiteral(CORVANTA_SUPPORT_REPORT_BINARY), arguments);
        QVERIFY(program.waitForFinished(60000));
        QCOMPARE(program.exitCode(), 0);
        const QString output = QString::fromUtf8(program.readAllStandardOutput());
        for (const QString& mention : std::as_const(mentions))
            QVERIFY2(output.contains(mention), qPrintable(mention + u"\n---\n"_s + output));
    }
};

int main(int argc, char** argv)
{
    if (qEnvironmentVariableIsSet(childVariable))
        return printUserTexts(argc, argv);
    QCoreApplication application(argc, argv);
    tst_Translations test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_translations.moc"
