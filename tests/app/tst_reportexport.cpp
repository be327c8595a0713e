#include "MailHandler.h"
#include "RecordingData.h"
#include "ReportDiff.h"
#include "ReportDocument.h"
#include "ReportExport.h"
#include "ReportFragments.h"
#include "ReportJson.h"
#include "ReportRedactor.h"
#include "TestEnvironment.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>
#include <QUrlQuery>

#include <functional>
#include <optional>

using namespace Qt::StringLiterals;

namespace {

using Render = std::function<void(QString&)>;
using Sections = QList<ReportDocument::Section>;

ReportDocument::Section section(int kind, const Render& render, const QStringList& errors = {})
{
    RecordingData data(kind);
    data.fakeErrors = errors;
    appendErrors(*data.text(), data);
    render(*data.text());
    return {kind, data.name(), errors, renderedFields(data.text()), htmlToPlainText(*data.text())};
}

ReportDocument document(const Sections& sections, const QDateTime& generated = {})
{
    return {generated, u"Corvanta Support"_s, u"1.0.5"_s, sections};
}

// A heading with a list under it, a path with its state and what follows without the helpers.
Render page(const QStringList& items, const QString& pathNote, const QString& extra = {})
{
    return [=](QString& text) {
        appendField(text, u"MAC Interfaces:"_s, QVariant());
        text += lineBreaks(1);
        for (const QString& item : items) {
            appendIndented(text, QString(), item, 0);
            text += lineBreaks(1);
        }
        appendField(text, u"Application Data:"_s, fileLink(u"/d&a"_s), pathNote,
                    removeLink(u"deleteAppData"_s));
        text += lineBreaks(1) + extra;
    };
}

} // namespace

// The report: its fragments, text, folder, picture, e-mail and the report as data.
class tst_ReportExport : public QObject
{
    Q_OBJECT

private slots:
    void fragments_data()
    {
        QTest::addColumn<QString>("html");
        QTest::addColumn<QString>("expected");
        const auto field = [](const QString& label, const QVariant& value, const QString& note = {},
                              const QString& suffix = {}) {
            QString output = u"before|"_s;
            appendField(output, label, value, note, suffix);
            return output;
        };
        RecordingData erring(0);
        erring.fakeErrors = QStringList{u"%1 and %2"_s, u"b"_s};
        QTest::newRow("errors, placeholders kept")
            << errorsHtml(erring) << "Errors:<br>1. %1 and %2<br>2. b";
        QTest::newRow("field with note and suffix")
            << field("RAM:", 8, "low", "GB") << "before|RAM:                8 - low GB";
        QTest::newRow("field null with note")
            << field("Path:", QVariant(), "missing") << "before|Path:               missing";
        QTest::newRow("field empty text is not null")
            << field("Path:", QString(), "missing") << "before|Path:                - missing";
        QTest::newRow("field long label is not cut")
            << field("A label of more than twenty:", 1) << "before|A label of more than twenty:1";
        // The fields the helpers last laid out; text written over them leaves them out.
        const auto fields = [](const Render& render) {
            QStringList shown;
            for (const ReportField& laid : section(0, render).fields)
                shown << laid.label + '|' + (laid.value.isNull() ? u"-"_s : laid.value) + '|'
                             + laid.note;
            return shown.join('\n');
        };
        QTest::newRow("fields rendered again, shorter") << fields([](QString& text) {
            page({u"1"_s, u"2"_s}, {})(text);
            text.clear();
            appendField(text, u"A:"_s, true);
        }) << u"A:|Yes|"_s;
        QTest::newRow("fields written over") << fields([](QString& text) {
            appendField(text, u"A:"_s, 1);
            text = u"A:                 9"_s;
        }) << QString();
    }

    void fragments()
    {
        QFETCH(QString, html);
        QTEST(html, "expected");
    }

    // A folder per UTC second; the picture stacks pages by kind, transparent beside narrow ones.
    void savedFolder()
    {
        TestEnvironment home;
        const SupportDataTable table = RecordingData::table({0, 1, 2});
        const QString parent = home.path(u"reports"_s);
        const QDateTime first(QDate(2024, 3, 20), QTime(15, 12, 7, 100), Qt::UTC);
        const QString folder = saveReportTo(*table, parent, first);
        QCOMPARE(folder, parent + "/Corvanta Support Report 2024-03-20T151207Z");
        QVERIFY(QFile::exists(folder + "/report.txt") && !QFile::exists(folder + "/report.png"));
        // Later in the same second: the same folder, its report overwritten.
        findSupportData(*table, 0)->text()->append(u"later"_s);
        QCOMPARE(saveReportTo(*table, parent, first.addMSecs(800)), folder);
        QCOMPARE(QString::fromUtf8(fileBytes(folder + "/report.txt")), reportText(*table));
        QVERIFY(reportText(*table).contains(u"later"_s));
        QCOMPARE(reportFolderName(first.toOffsetFromUtc(3600)),
                 u"Corvanta Support Report 2024-03-20T151207Z"_s);

        const QList<QColor> colours{Qt::red, Qt::green, Qt::blue};
        for (const auto& [kind, size] :
             {std::pair{0, QSize(30, 20)}, {1, {120, 40}}, {2, {50, 10}}})
            (RecordingData::in(table, kind)->fakeImage = QImage(size, QImage::Format_ARGB32))
                .fill(colours[kind]);
        const QString next = saveReportTo(*table, parent, first.addSecs(1));
        QCOMPARE(next, parent + "/Corvanta Support Report 2024-03-20T151208Z");
        const QImage saved(next + "/report.png");
        QCOMPARE(saved.size(), QSize(120, 70));
        QCOMPARE((QList<QColor>{saved.pixelColor(29, 19), saved.pixelColor(119, 59),
                                saved.pixelColor(0, 60)}),
                 colours);
        QCOMPARE(saved.pixelColor(30, 0).alpha() + saved.pixelColor(50, 69).alpha(), 0);

        // The status bar says what was written or why not; below a plain file even root fails.
        QVERIFY(putFile(home.path(u"file"_s), "x"));
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Failed to open writable text file"));
        QCOMPARE(saveReportIn(*table, home.path(u"file"_s)),
                 "Report not saved: no folder can be made in "
                     + QDir::toNativeSeparators(home.path(u"file"_s)) + '.');
        QCOMPARE(saveReportIn(*table, QString()), u"Report not saved: no folder was chosen."_s);
        const QString said = saveReportIn(*table, parent);
        QVERIFY2(said.startsWith("Report saved in " + QDir::toNativeSeparators(parent))
                     && QFile::exists(said.section(u" in "_s, 1) + "/report.txt"),
                 qPrintable(said));
    }

    void emailCarriesTheReportWhole()
    {
        const QString report = u"/home/a&b/#1\nbody=x&subject=y\n1+1 %41 100%\nGrüße\r\nΩ"_s;
        const QUrl url(QString::fromLatin1(emailUrl(report).toEncoded()), QUrl::StrictMode);
        const QUrlQuery query(url);
        QVERIFY(url.isValid() && query.queryItems().size() == 2);
        QCOMPARE(query.queryItemValue(u"subject"_s, QUrl::FullyDecoded),
                 u"Corvanta Support Report"_s);
        QCOMPARE(query.queryItemValue(u"body"_s, QUrl::FullyDecoded), report);

#ifndef Q_OS_WIN // ShellExecute itself fails where no program takes the link.
        // Without a mailto handler the fallback must show: the desktop's opener fails unseen.
        TestEnvironment home;
        const auto handled = [] {
            std::optional<bool> answer;
            QObject context;
            whenMailHandlerKnown(&context, [&answer](bool known) { answer = known; });
            (void)QTest::qWaitFor([&answer] { return answer.has_value(); }, 10000);
            return answer;
        };
        QCOMPARE(handled(), std::optional<bool>(false));
        QVERIFY(putFile(home.path(u".local/share/applications/mail.desktop"_s),
                        "[Desktop Entry]\nType=Application\nName=Mail\nExec=true %u\n"
                        "MimeType=x-scheme-handler/mailto;\n"));
        QVERIFY(putFile(home.path(u".config/mimeapps.list"_s),
                        "[Default Applications]\nx-scheme-handler/mailto=mail.desktop\n"));
        QCOMPARE(handled(), std::optional<bool>(true));
#endif
    }

    // Changes are told by field, other lines by themselves; the time and the order are no change.
    void differences()
    {
        const QStringList macs{u"02-01"_s, u"02-02"_s};
        const Sections earlier{section(0, page(macs, {}), {u"Gone."_s}),
                               section(5, page(macs, u"Does Not Exist"_s))};
        const Sections later{section(1, page(macs, {})),
                             section(5, page({u"02-03"_s, macs[0]}, {}, u"free"_s), {u"Full."_s})};
        QCOMPARE(
            reportDifferences(document(earlier), document(later, QDateTime::currentDateTime())),
            u"Display:\n  the section vanished\nFonts:\n  the section appeared\nSystem:\n"
            "  changed   MAC Interfaces: \"02-02\" -> \"02-03\"\n"
            "  changed   Application Data: \"/d&a - Does Not Exist\" -> \"/d&a\"\n"
            "  appeared  \"free\"\n  error appeared: Full.\n"_s);
    }

    // What the schema refuses, the reader refuses too.
    void readerAndSchema_data()
    {
        QTest::addColumn<QByteArray>("json");
        QTest::addColumn<bool>("accepted");
        const QByteArray written = reportJson(document(
            {section(3, [](QString& page) { appendPathState(page, u"x"_s, u"/a"_s, "OK"_L1); },
                     {u"Full."_s}),
             section(5, page({u"02-01"_s}, {}))},
            QDateTime::currentDateTime()));
        const auto row = [&written](const char* name, const QByteArray& from,
                                    const QByteArray& to) {
            QVERIFY(written.contains(from));
            QTest::newRow(name) << QByteArray(written).replace(from, to) << (from == to);
        };
        row("as written", "{", "{");
        row("another key", "\"sections\"", "\"extra\": 1, \"sections\"");
        row("a short version", "\"1.0.5\"", "\"1.0\"");
        row("a time of another form", "\"generated\": \"", "\"generated\": \"x");
        row("an unknown kind", "\"kind\": 3", "\"kind\": 2");
        row("an empty error", "\"Full.\"", "\"\"");
        row("a path's state of a third kind", "\"value\": \"OK\"", "\"value\": \"Maybe\"");
        row("a field with another key", "\"note\": \"\",", "\"note\": \"\", \"extra\": 1,");
    }

    void readerAndSchema()
    {
        QFETCH(QByteArray, json);
        QFETCH(bool, accepted);
        ReportDocument read;
        QString reason;
        QCOMPARE(readReportJson(json, &read, &reason), accepted);
#ifndef Q_OS_WIN // The schema's reference validator is Linux's Python.
        QProcess schema;
        schema.setStandardErrorFile(QProcess::nullDevice());
        schema.start(
            u"python3"_s,
            {u"-c"_s,
             u"import json, sys, jsonschema\n"
             "jsonschema.validate(json.loads(sys.argv[1]), json.load(open(sys.argv[2])))"_s,
             QString::fromUtf8(json),
             QStringLiteral(CORVANTA_SOURCE_DIR "/app/report.schema.json")});
        QVERIFY(schema.waitForFinished());
        QCOMPARE(schema.exitCode() == 0, accepted);
#endif
    }

    void redaction_data()
    {
        QTest::addColumn<QString>("host");
        QTest::addColumn<QString>("user");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const QString example = u"Build-Host.example.org"_s;
        QTest::newRow("MAC spellings")
            << example << u"ann"_s
            << u"02-FC-00-00-00-01 02:fc:00:00:00:01 id-02-fc-00-00-00-07 00-00-00-00-00-00-00-E0"_s
            << u"mac-1 mac-1 id-mac-2 mac-3"_s;
        QTest::newRow("address spellings")
            << example << u"ann"_s
            << u"FD00:0:0:0:0:0:0:1234. [fd00:0000:0000:0000:0000:0000:0000:1234%lo]:80 "
               "::ffff:203.0.113.7 10.9.8.7"_s
            << u"ip-1. [ip-1]:80 ip-2 ip-3"_s;
#ifndef Q_OS_WIN // Windows' home is the user's profile, whatever HOME says.
        QTest::newRow("names, home, identifier")
            << example << u"ann"_s
            << u"BUILD-HOST Ann's build_host.example.org %1/Documents "
               "0F8FAD5BD9CB469FA16570867728950E"_s
            << u"host-1 user-1's host-1 ~/Documents uuid-1"_s;
#endif
        QTest::newRow("look-alikes")
            << example << u"ann"_s
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1 v5.2.0.14 "
               "app-5.2.0.14 anna /home/ann2"_s
            << u"20:03:22 1.0.5 2026-11-22 :: QStandardPaths::XDG 256.1.1.1 v5.2.0.14 "
               "app-5.2.0.14 anna /home/ann2"_s;
        // Names that are common words, or parts of the report's own words, only as whole words.
        QTest::newRow("debian, local")
            << u"debian"_s << u"local"_s
            << u"~/.local/share Locale: /srv/local/x LOCAL debian.lan Debian"_s
            << u"~/.local/share Locale: /srv/user-1/x user-1 host-1.lan host-1"_s;
        QTest::newRow("home, data, system, linux")
            << u"home"_s << u"data"_s << u"/home/data/x ~/.data Data: systemd HOME"_s
            << u"/host-1/user-1/x ~/.data user-1: systemd host-1"_s;
    }

    // Every spelling of a value gets its placeholder, as a whole word; look-alikes stay.
    void redaction()
    {
        QFETCH(QString, host);
        QFETCH(QString, user);
        QFETCH(QString, text);
        TestEnvironment home;
        const ReportDocument report = document({section(5, [&](QString& page) {
            appendField(page, u"Host Name:"_s, host);
            appendField(page, u"User Name:"_s, user);
            appendField(page, u"UUID:"_s, u"0f8fad5b-d9cb-469f-a165-70867728950e"_s);
            page += u"<br>fd00::1234 203.0.113.7"_s;
        })});
        ReportRedactor redactor;
        redactor.learn(report);
        QTEST(redactor.redact(QString(text).replace(u"%1"_s, home.home())), "expected");
    }

    // Placeholders persist in a file only the user reads; a new value takes the next number.
    void placeholdersKept()
    {
        TestEnvironment home;
        const QString mapping = home.path(u".config/corvanta-support/placeholders"_s);
        QString problem;
        {
            ReportRedactor redactor(mapping);
            QCOMPARE(redactor.redact(u"10.1.2.3 fd00::1"_s), u"ip-1 ip-2"_s);
            QVERIFY2(redactor.save(&problem), qPrintable(problem));
        }
#ifndef Q_OS_WIN // There the profile folder is the user's alone.
        // The "user" permissions are the owner's again, as seen by the owner.
        QCOMPARE(QFile::permissions(mapping) & ~QFile::Permissions(0x0700),
                 QFile::ReadOwner | QFile::WriteOwner);
#endif
        ReportRedactor again(mapping);
        QCOMPARE(again.redact(u"10.9.9.9 FD00:0::1 10.1.2.3"_s), u"ip-3 ip-2 ip-1"_s);
        QVERIFY(again.save(&problem));
        QCOMPARE(ReportRedactor(mapping).redact(u"10.9.9.9"_s), u"ip-3"_s);
    }
};

QTEST_MAIN(tst_ReportExport)
#include "tst_reportexport.moc"
