#include "ReportFragments.h"
#include "SupportData.h"

#include <QTest>

class tst_ReportFragments : public QObject
{
    Q_OBJECT
private slots:
    void placeholder() { QCOMPARE(lineBreaks(2), QStringLiteral("<br><br>")); }
};

QTEST_GUILESS_MAIN(tst_ReportFragments)
#include "tst_reportfragments.moc"
