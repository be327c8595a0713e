#include "BasicTextProcessor.h"

#include <QTest>

using namespace Qt::StringLiterals;

class tst_BasicTextProcessor : public QObject
{
    Q_OBJECT

private slots:
    void formatBytes_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("plain");
        QTest::addColumn<QString>("withDecimal");
        const qint64 kb = 1024, mb = kb * kb, tb = mb * mb;
        QTest::newRow("zero") << qint64(0) << "0 bytes" << u"0.0 bytes"_s;
        QTest::newRow("one") << qint64(1) << "1 byte" << u"1 byte"_s;
        QTest::newRow("below a kilobyte") << kb - 1 << "1023 bytes" << u"1023.0 bytes"_s;
        QTest::newRow("kilobyte") << kb << "1 KB" << u"1.0 KB"_s;
        QTest::newRow("one and a half") << kb * 3 / 2 << "1.5 KB" << u"1.5 KB"_s;
        QTest::newRow("rounded after the unit") << mb - 1 << "1024 KB" << u"1024.0 KB"_s;
        QTest::newRow("half up") << mb + 104858 << "1.1 MB" << u"1.1 MB"_s;
        QTest::newRow("beyond terabytes stays in TB") << 2048 * tb << "2048 TB" << u"2048.0 TB"_s;
        QTest::newRow("negative is never scaled")
            << qint64(-5000) << "-5000 bytes" << u"-5000.0 bytes"_s;
    }

    void formatBytes()
    {
        QFETCH(qint64, bytes);
        QTEST(BasicTextProcessor::formatBytes(bytes, false), "plain");
        QTEST(BasicTextProcessor::formatBytes(bytes, true), "withDecimal");
    }
};

QTEST_GUILESS_MAIN(tst_BasicTextProcessor)
#include "tst_basictextprocessor.moc"
