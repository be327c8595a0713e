#include "RunAsNobody.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

using namespace Qt::StringLiterals;

QString failureAsNobody()
{
    const QString name = QString::fromLatin1(QTest::currentTestFunction());
    const QString tag = QString::fromLatin1(QTest::currentDataTag());
    QProcess child;
    child.setProcessChannelMode(QProcess::MergedChannels);
    child.start(u"setpriv"_s, {u"--reuid=nobody"_s, u"--regid=nogroup"_s, u"--clear-groups"_s,
                               QCoreApplication::applicationFilePath(),
                               tag.isEmpty() ? name : name + QLatin1Char(':') + tag});
    if (!child.waitForFinished(120000))
        return u"setpriv did not finish: "_s + child.errorString();
    const QString output = QString::fromUtf8(child.readAll());
    // A child that ran or skipped nothing would also exit with 0.
    const QString passed = u"::%1%2"_s.arg(name, tag.isEmpty() ? tag : u"(%1)"_s.arg(tag));
    const bool ok = child.exitStatus() == QProcess::NormalExit && child.exitCode() == 0
                    && output.contains(u"PASS   : "_s) && output.contains(passed)
                    && !output.contains(u"SKIP"_s);
    return ok ? QString() : output.right(3000);
}
