#include "BaseApplication.h"
#include "Downloader.h"
#include "FileDirTools.h"
#include "LoopbackHttpServer.h"
#include "NetworkTransfer.h"
#include "TestEnvironment.h"

#include <QAbstractButton>
#include <QDir>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QNetworkRequest>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

using Outcome = std::pair<bool, QNetworkReply::NetworkError>;

Outcome outcome(const QSignalSpy& complete, qsizetype index = 0)
{
    return {complete.at(index).at(0).toBool(),
            complete.at(index).at(1).value<QNetworkReply::NetworkError>()};
}

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(bytes.data()), size / 4);
    return bytes;
}

// Records the hops that come through the virtual request path.
class HopRecorder : public NetworkTransfer
{
public:
    QList<QUrl> hops;
    void startRequest(const QNetworkRequest& request) override
    {
        hops << request.url();
        NetworkTransfer::startRequest(request);
    }
};

} // namespace

class tst_NetworkTransfer : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
    int m_argc = 1;
    char m_name[20] = "tst_networktransfer";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<BaseApplication> m_application;

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        m_application =
            std::make_unique<BaseApplication>(u"Corvanta"_s, u"1.0.5"_s, m_argc, m_argv);
    }

    void cleanup() { QDir(tempFolder()).removeRecursively(); }

    void body_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("small") << false << QByteArray("line\r\n\0\xff", 8);
        QTest::newRow("over two chunks") << false << randomBytes(9 << 20);
        QTest::newRow("empty") << false << QByteArray();
        QTest::newRow("self-signed certificate") << true << randomBytes(1 << 20);
    }

    void body()
    {
        QFETCH(bool, tls);
        QFETCH(QByteArray, body);
        LoopbackHttpServer server(tls);
        QVERIFY(server.isListening());
        server.answer(u"/file"_s, 200, body);
        NetworkTransfer transfer;
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        QSignalSpy progress(&transfer, &NetworkTransfer::signalProgress);
        transfer.start(server.url(u"/file"_s), {}, {}, true);
        QTRY_COMPARE_WITH_TIMEOUT(complete.size(), 1, 30000);

        QCOMPARE(outcome(complete), Outcome(true, QNetworkReply::NoError));
        const QString file = transfer.takeFileName();
        QCOMPARE(fileBytes(file), body);
        QVERIFY(transfer.takeFileName() != file);
        QCOMPARE(progress.last().at(0).toLongLong(), body.size());
    }

    void redirectsHopByHop()
    {
        LoopbackHttpServer server;
        server.answer(u"/first"_s, 302, "moved",
                      "Location: " + server.url(u"/second"_s).toEncoded() + "\r\n");
        server.answer(u"/second"_s, 307, {},
                      "Location: " + server.url(u"/final"_s).toEncoded() + "\r\n");
        server.answer(u"/final"_s, 200, "kept");
        HopRecorder transfer;
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        transfer.start(server.url(u"/first"_s), {}, {}, true);
        QTRY_COMPARE(server.requests().size(), 3);
        QTRY_COMPARE(complete.size(), 1);

        QByteArrayList targets;
        for (const LoopbackHttpServer::Request& request : server.requests())
            targets << request.target;
        QCOMPARE(targets, (QByteArrayList{"/first", "/second", "/final"}));
        QCOMPARE(transfer.hops, (QList<QUrl>{server.url(u"/second"_s), server.url(u"/final"_s)}));
        QCOMPARE(outcome(complete), Outcome(true, QNetworkReply::NoError));
        QCOMPARE(fileBytes(transfer.takeFileName()), "kept");
    }

    void failures_data()
    {
        QTest::addColumn<QString>("path"); // empty: a closed port
        QTest::addColumn<bool>("quiet");
        QTest::addColumn<int>("code");
        QTest::addColumn<QStringList>("boxes"); // title and text of each box shown
        const QString title = u"Error Encountered"_s;
        const QString lead = u"Transfer failed, please try again later.\n"_s;
        QTest::newRow("refused, quiet") << "" << true << 1 << QStringList();
        QTest::newRow("refused") << "" << false << 1
                                 << QStringList{title, lead + "Error Code: 1 (Connection Refused)"};
        QTest::newRow("not found")
            << "/missing" << false << 203
            << QStringList{title, lead + "Error Code: 203 (Content Not Found)"};
        QTest::newRow("credentials refused, quiet") << "/secret" << true << 204 << QStringList();
    }

    void failures()
    {
        QFETCH(QString, path);
        QFETCH(bool, quiet);
        QFETCH(int, code);
        QFETCH(QStringList, boxes);
        LoopbackHttpServer server;
        server.answer(u"/missing"_s, 404, "none");
        server.answer(u"/secret"_s, 401, {}, "WWW-Authenticate: Basic realm=\"test\"\r\n");
        QUrl url = server.url(path);
        if (path.isEmpty()) {
            QTcpServer closed;
            QVERIFY(closed.listen(QHostAddress::LocalHost));
            url = QUrl(u"http://127.0.0.1:%1/file"_s.arg(closed.serverPort()));
        }
        // Answers each message box as a user would.
        QStringList shown;
        QTimer answerer;
        connect(&answerer, &QTimer::timeout, this, [&shown] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<QMessageBox*>(widget);
                QAbstractButton* ok = box ? box->button(QMessageBox::Ok) : nullptr;
                if (ok && box->isVisible()) {
                    shown << box->windowTitle() << box->text();
                    ok->click();
                }
            }
        });
        answerer.start(20);
        NetworkTransfer transfer;
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        transfer.start(url, u"user"_s, u"pass"_s, quiet);
        QTRY_COMPARE_WITH_TIMEOUT(complete.size(), 1, 20000);

        QCOMPARE(outcome(complete), Outcome(false, QNetworkReply::NetworkError(code)));
        QCOMPARE(shown, boxes);
    }

    void cancelAbortsOnce()
    {
        LoopbackHttpServer server; // never answers
        NetworkTransfer transfer;
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        transfer.start(server.url(u"/silent"_s), {}, {}, true);
        QTRY_COMPARE(server.requests().size(), 1);
        transfer.slotCancel();
        transfer.slotCancel();
        QTRY_COMPARE(server.openConnections(), 0);

        QCOMPARE(complete.size(), 1);
        QCOMPARE(outcome(complete), Outcome(false, QNetworkReply::OperationCanceledError));
    }

    void download_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<bool>("toDestination");
        QTest::addColumn<int>("timeoutSeconds");
        QTest::addColumn<QByteArray>("result");
        QTest::addColumn<int>("requests");
        QTest::newRow("body") << "/body" << false << 30 << QByteArray("payload") << 1;
        QTest::newRow("moved to the destination") << "/body" << true << 30 << QByteArray() << 1;
        QTest::newRow("silent server") << "/silent" << false << 1 << QByteArray() << 1;
        QTest::newRow("empty path") << "" << false << 30 << QByteArray() << 0;
    }

    void download()
    {
        QFETCH(QString, path);
        QFETCH(bool, toDestination);
        QFETCH(int, timeoutSeconds);
        QFETCH(QByteArray, result);
        QFETCH(int, requests);
        LoopbackHttpServer server;
        server.answer(u"/body"_s, 200, "payload");
        const QString destination = m_environment.path(u"saved.bin"_s);
        QFile::remove(destination);
        QElapsedTimer elapsed;
        elapsed.start();
        QCOMPARE(toDestination ? ::download(server.url(path), destination, true, timeoutSeconds)
                               : ::download(server.url(path), true, timeoutSeconds),
                 result);

        // Only the silent server makes it wait for the limit.
        if (path == "/silent"_L1)
            QCOMPARE_GE(elapsed.elapsed(), 900);
        else
            QCOMPARE_LT(elapsed.elapsed(), timeoutSeconds * 500);
        QCOMPARE(server.requests().size(), requests);
        QCOMPARE(QFile::exists(destination), toDestination);
        if (toDestination)
            QCOMPARE(fileBytes(destination), "payload");
        QCOMPARE(QDir(tempFolder()).entryList(QDir::Files), QStringList());
    }
};

QTEST_APPLESS_MAIN(tst_NetworkTransfer)
#include "tst_networktransfer.moc"
