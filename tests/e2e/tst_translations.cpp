#include "BasicTextProcessor.h"
#include "SupportApplication.h"
#include "SupportMainWindow.h"

#include <QDialogButtonBox>
#include <QMenu>
#include <QMenuBar>
#include <QProcess>
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

} // namespace

// The program speaks the language of LANG where it has a translation for it, with Qt's own texts
// in the same language. The report program's help is the command-line test's.
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
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : {u"LC_ALL"_s, u"LC_MESSAGES"_s, u"LANGUAGE"_s})
            environment.remove(name);
        environment.insert(u"LANG"_s, lang);
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
