#include "RecordingData.h"
#include "ReportExport.h"
#include "ReportFragments.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QLabel>
#include <QRegularExpression>
#include <QTest>

namespace {

SupportDataTable makeTable()
{
    auto table = SupportDataTable::create();
    const QList<QPair<int, QString>> kinds{{5, QStringLiteral("System")},
                                           {0, QStringLiteral("Display")},
                                           {3, QStringLiteral("Permissions")}};
    for (const auto& [kind, name] : kinds) {
        auto data = std::make_unique<RecordingData>(kind, name, nullptr);
        QString text;
        appendField(text, name + QStringLiteral(":"), kind);
        text += lineBreaks(1) + QStringLiteral("Temp: ") + actionLink("Clear", "clearTemp")
                + QLatin1Char(' ') + fileLink(QStringLiteral("/tmp/a&b")) + QLatin1Char(' ')
                + removeLink(QStringLiteral("deletePath/tmp/a&b"));
        data->fakeText = text;
        data->load();
        table->emplace(kind, std::move(data));
    }
    return table;
}

QImage filled(int width, int height, const QColor& colour)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

} // namespace

class tst_ReportExport : public QObject
{
    Q_OBJECT

private slots:
    void layout();
    void startTimeIsFixed();
    void folderPerSecond();
    void pictureIsTheStackOfImages_data();
    void pictureIsTheStackOfImages();
    void unwritableFolderIsSurvived();
    void emailUrl();
    void renderedWidgetHasItsSize();
};

void tst_ReportExport::layout()
{
    const SupportDataTable table = makeTable();
    const QString report = reportText(*table);
    const QString rule = QString(50, QLatin1Char('='));
    const QString entry = QStringLiteral("Temp:  /tmp/a&b \n\n");
    QCOMPARE(report, QStringLiteral("Generated: ") + reportStartTime().toString(Qt::TextDate)
                         + "\n\n" + rule + "\nDisplay\n\nDisplay:            0\n" + entry + rule
                         + "\nPermissions\n\nPermissions:        3\n" + entry + rule
                         + "\nSystem\n\nSystem:             5\n" + entry);
    QVERIFY(!report.contains(QLatin1Char('<')));
    QVERIFY(!report.contains(QStringLiteral("Remove")));
    QVERIFY(!report.contains(QStringLiteral("Clear")));
}

void tst_ReportExport::startTimeIsFixed()
{
    const QDateTime start = reportStartTime();
    QVERIFY(start.isValid());
    QVERIFY(start <= QDateTime::currentDateTime());
    QTest::qWait(1100);
    QVERIFY(reportText(*makeTable())
                .startsWith(QStringLiteral("Generated: ") + start.toString(Qt::TextDate) + "\n\n"));
}

void tst_ReportExport::folderPerSecond()
{
    TestEnvironment home;
    const SupportDataTable table = makeTable();
    const QString parent = home.path(QStringLiteral("reports"));
    const QDateTime first(QDate(2024, 3, 20), QTime(15, 12, 7, 100), Qt::UTC);
    const QString folder = saveReportTo(*table, parent, first);
    QCOMPARE(folder, parent + QStringLiteral("/Corvanta Support Report 2024-03-20T151207Z"));
    QVERIFY(QFile::exists(folder + QStringLiteral("/report.txt")));

    // Later in the same second: the same folder, its report overwritten.
    findSupportData(*table, 0)->text()->append(QStringLiteral("<br>later"));
    QCOMPARE(saveReportTo(*table, parent, first.addMSecs(800)), folder);
    QFile text(folder + QStringLiteral("/report.txt"));
    QVERIFY(text.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(text.readAll()), reportText(*table));

    // A second later: a folder of its own.
    const QString second = saveReportTo(*table, parent, first.addSecs(1));
    QVERIFY(second != folder);
    QCOMPARE(QDir(parent).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), 2);

    // Local times are named by their UTC time.
    QDateTime local = first.toOffsetFromUtc(3600);
    QCOMPARE(reportFolderName(local), QStringLiteral("Corvanta Support Report 2024-03-20T151207Z"));
}

void tst_ReportExport::pictureIsTheStackOfImages_data()
{
    QTest::addColumn<QList<QImage>>("images");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("none") << QList<QImage>{QImage(), QImage(), QImage()} << QSize();
    QTest::newRow("one") << QList<QImage>{QImage(), filled(30, 20, Qt::red), QImage()}
                         << QSize(30, 20);
    QTest::newRow("two, widest wins")
        << QList<QImage>{filled(30, 20, Qt::red), QImage(), filled(50, 10, Qt::blue)}
        << QSize(50, 30);
}

void tst_ReportExport::pictureIsTheStackOfImages()
{
    QFETCH(QList<QImage>, images);
    QFETCH(QSize, expected);
    TestEnvironment home;
    auto table = SupportDataTable::create();
    for (int i = 0; i < images.size(); ++i) {
        auto data = std::make_unique<RecordingData>(i, QStringLiteral("Item"), nullptr);
        data->fakeImage = images.at(i);
        table->emplace(i, std::move(data));
    }
    const QString folder = saveReportTo(*table, home.home());
    QVERIFY(QFile::exists(folder + QStringLiteral("/report.txt")));
    const QString png = folder + QStringLiteral("/report.png");
    if (!expected.isValid()) {
        QVERIFY(!QFile::exists(png));
        return;
    }
    const QImage saved(png);
    QCOMPARE(saved.size(), expected);
    int top = 0;
    for (const QImage& image : std::as_const(images)) {
        if (image.isNull())
            continue;
        QCOMPARE(saved.pixelColor(0, top), image.pixelColor(0, 0));
        QCOMPARE(saved.pixelColor(image.width() - 1, top + image.height() - 1),
                 image.pixelColor(0, 0));
        top += image.height();
    }
    // Beside a narrower picture the stack stays transparent.
    if (expected.width() > images.first().width() && !images.first().isNull())
        QCOMPARE(saved.pixelColor(expected.width() - 1, 0).alpha(), 0);
}

void tst_ReportExport::unwritableFolderIsSurvived()
{
    TestEnvironment home;
    QFile blocker(home.path(QStringLiteral("file")));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    // The parent is a plain file, so nothing can be created below it, even by root.
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression("^Failed to open writable text file: .*"));
    const QString folder = saveReportTo(*makeTable(), blocker.fileName());
    QVERIFY(!QFile::exists(folder + QStringLiteral("/report.txt")));
}

void tst_ReportExport::emailUrl()
{
    const QString report = QStringLiteral("Generated: x\n\nA & B = 100% ?#");
    const QString url = ::emailUrl(report);
    QCOMPARE(url, QStringLiteral("mailto:") + supportEmailAddress()
                      + QStringLiteral("?subject=Corvanta Support Report&body=") + report);
    QVERIFY(supportEmailAddress().contains(QLatin1Char('@')));
}

void tst_ReportExport::renderedWidgetHasItsSize()
{
    QLabel label(QStringLiteral("sample"));
    label.setAutoFillBackground(true);
    QPalette palette = label.palette();
    palette.setColor(QPalette::Window, Qt::green);
    label.setPalette(palette);
    label.resize(120, 40);
    const QImage image = renderWidget(&label);
    QCOMPARE(image.size(), QSize(120, 40));
    QCOMPARE(image.format(), QImage::Format_ARGB32);
    QCOMPARE(image.pixelColor(1, 1), QColor(Qt::green));
    QVERIFY(image.dotsPerMeterX() > 0);
}

QTEST_MAIN(tst_ReportExport)
#include "tst_reportexport.moc"
