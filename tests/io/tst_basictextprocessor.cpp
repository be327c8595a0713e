#include "BasicTextProcessor.h"

#include <QTest>

class tst_BasicTextProcessor : public QObject
{
    Q_OBJECT

private slots:
    void formatBytes_data();
    void formatBytes();
};

void tst_BasicTextProcessor::formatBytes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("plain");
    QTest::addColumn<QString>("withDecimal");
    QTest::newRow("zero") << qint64(0) << "0 bytes"
                          << "0.0 bytes";
    QTest::newRow("one") << qint64(1) << "1 byte"
                         << "1 byte";
    QTest::newRow("two") << qint64(2) << "2 bytes"
                         << "2.0 bytes";
    QTest::newRow("below a kilobyte") << qint64(1023) << "1023 bytes"
                                      << "1023.0 bytes";
    QTest::newRow("kilobyte") << qint64(1024) << "1 KB"
                              << "1.0 KB";
    QTest::newRow("one and a half") << qint64(1536) << "1.5 KB"
                                    << "1.5 KB";
    QTest::newRow("rounded after the unit") << qint64(1048575) << "1024 KB"
                                            << "1024.0 KB";
    QTest::newRow("megabyte") << qint64(1048576) << "1 MB"
                              << "1.0 MB";
    QTest::newRow("half up") << qint64(1024 * 1024 + 104858) << "1.1 MB"
                             << "1.1 MB";
    QTest::newRow("gigabytes") << qint64(5) * 1024 * 1024 * 1024 << "5 GB"
                               << "5.0 GB";
    QTest::newRow("terabytes") << qint64(3) * 1024 * 1024 * 1024 * 1024 << "3 TB"
                               << "3.0 TB";
    QTest::newRow("beyond terabytes stays in TB")
        << qint64(2048) * 1024 * 1024 * 1024 * 1024 << "2048 TB"
        << "2048.0 TB";
    QTest::newRow("negative is never scaled") << qint64(-5000) << "-5000 bytes"
                                              << "-5000.0 bytes";
    QTest::newRow("minus one") << qint64(-1) << "-1 bytes"
                               << "-1.0 bytes";
}

void tst_BasicTextProcessor::formatBytes()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, plain);
    QFETCH(QString, withDecimal);
    QCOMPARE(BasicTextProcessor::formatBytes(bytes, false), plain);
    QCOMPARE(BasicTextProcessor::formatBytes(bytes, true), withDecimal);
}

QTEST_GUILESS_MAIN(tst_BasicTextProcessor)
#include "tst_basictextprocessor.moc"
