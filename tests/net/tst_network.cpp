#include "BaseApplication.h"
#include "BaseSettings.h"
#include "Downloader.h"
#include "FileDirTools.h"
#include "LoopbackHttpServer.h"
#include "NetworkTools.h"
#ifndef Q_OS_WIN
#include "PrivateNamespace.h"
#endif
#include "TestEnvironment.h"

#include <QAbstractButton>
#include <QAuthenticator>
#include <QDir>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

class tst_Network : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
    int m_argc = 1;
    char m_name[12] = "tst_network";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<BaseApplication> m_application;
    QHash<QString, QByteArray> m_bodies;

private slots:
    void initTestCase()
    {
        qRegisterMetaType<QAuthenticator*>();
        m_application =
            std::make_unique<BaseApplication>(u"Corvanta"_s, u"1.0.5"_s, m_argc, m_argv);
        QByteArray large(9 << 20, Qt::Uninitialized); // over two 4 MiB chunks
        QRandomGenerator::global()->fillRange(reinterpret_cast<quint32*>(large.data()),
                                              large.size() / 4);
        m_bodies = {{"/small", QByteArray("a\r\n\0\xff", 5)}, {"/large", large}, {"/empty", {}}};
    }

    // The system's proxy is a closed port that loopback addresses bypass, unless a case says else.
    void init()
    {
        qputenv("http_proxy", "http://127.0.0.1:9");
        qputenv("no_proxy", "localhost,127.0.0.1");
    }

    void cleanup()
    {
        QFile::remove(BaseSettings::fileName(QString()));
        QDir(tempFolder()).removeRecursively();
    }

    // Rows "full temp folder": true in the rerun on an 8 KiB temp folder, which other runs start.
    bool inFullTempFolder(const char* function)
    {
#ifdef Q_OS_WIN
        Q_UNUSED(function);
        QTest::qSkip("The full folder is made in a private mount namespace, which is Linux's.",
                     __FILE__, __LINE__);
        return false;
#else
        const bool inner = !tinyFileSystem().isEmpty();
        const bool ready =
            inner ? makePath(tempFolder()) && bindFile(tinyFileSystem(), tempFolder())
                  : runWithTinyFileSystem(QLatin1String(function) + u":full temp folder"_s) == 0;
        QTest::qVerify(ready, "ready", "the run in a full temp folder", __FILE__, __LINE__);
        return inner && ready;
#endif
    }

    // A code of the table, and one that is not in it.
    void errorText()
    {
        QCOMPARE(NetworkTools::errorText(QNetworkReply::ContentReSendError) + '|'
                     + NetworkTools::errorText(QNetworkReply::NetworkError(499)),
                 u"Error Code: 205 (Content ReSend Error)|Error Code: 499 (Unknown Error)"_s);
    }

    void transfer_data()
    {
        QTest::addColumn<bool>("tls");
        QTest::addColumn<QString>("path"); // empty: a closed port; a whole URL: through the proxy
        QTest::addColumn<bool>("quiet");
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArrayList>("requests");
        QTest::addColumn<QStringList>("events"); // authentication asked, boxes shown
        auto row = [](const char* name, bool tls, const QByteArray& path, bool quiet, int code,
                      const QByteArrayList& requests, const QStringList& events = {}) {
            QTest::newRow(name) << tls << QString::fromLatin1(path) << quiet << code << requests
                                << events;
        };
        const QString box = u"box Error Encountered|Transfer failed, please try again later.\n"_s;
        for (const QByteArray path : {"/small", "/large", "/empty"})
            row(path, false, path, true, 0, {path});
#ifndef Q_OS_WIN // The loopback server's certificate is made by Linux's openssl.
        row("self-signed", true, "/large", true, 0, {"/large"});
#endif
        row("two redirects", false, "/first", true, 0, {"/first", "/second", "/small"});
        row("relative redirects", false, "/rooted", true, 0, {"/rooted", "/relative", "/small"});
        row("redirect loop", false, "/loop", true, QNetworkReply::TooManyRedirectsError,
            QByteArrayList(21, "/loop"));
        for (const QByteArray scheme : {"file", "ftp", "data"})
            row(scheme, false, "/to-" + scheme, false, 301, {"/to-" + scheme},
                {box + "Error Code: 301 (Protocol Unknown)"});
        row("full temp folder", false, "/large", false, 299, {"/large"},
            {box + "The download could not be written to disk."});
        row("refused, quiet", false, "", true, 1, {});
        row("refused", false, "", false, 1, {}, {box + "Error Code: 1 (Connection Refused)"});
        // The stored pair goes out once; refused, it is offered to the signal, not sent again.
        row("credentials refused", false, "/secret", true, 204,
            {"/secret", "/secret Basic dXNlcjpwYXNz"}, {"asked reply user:pass"});
#ifndef Q_OS_WIN // There Qt reads the system's proxy once, from the registry.
        row("proxy wants credentials", false, "http://127.0.0.2/proxy", true, 105,
            {"127.0.0.2/proxy"}, {"asked none :"});
#endif
        row("cancelled", false, "/silent", false, 5, {"/silent"});
    }

    void transfer()
    {
        QFETCH(bool, tls);
        QFETCH(QString, path);
        QFETCH(bool, quiet);
        QFETCH(int, code);
        QFETCH(QByteArrayList, requests);
        QFETCH(QStringList, events);
        if (QTest::currentDataTag() == "full temp folder"_L1 && !inFullTempFolder("transfer"))
            return;
        LoopbackHttpServer server(tls);
        for (auto body = m_bodies.cbegin(); body != m_bodies.cend(); ++body)
            server.answer(body.key(), 200, body.value());
        server.answer(u"/first"_s, 302, "moved",
                      "Location: " + server.url(u"/second"_s).toEncoded() + "\r\n");
        server.answer(u"/second"_s, 307, {},
                      "Location: " + server.url(u"/small"_s).toEncoded() + "\r\n");
        server.answer(u"/secret"_s, 401, {}, "WWW-Authenticate: Basic realm=\"test\"\r\n");
        server.answer(u"/proxy"_s, 407, {}, "Proxy-Authenticate: Basic realm=\"proxy\"\r\n");
        server.answer(u"/rooted"_s, 301, {}, "Location: /relative\r\n");
        server.answer(u"/relative"_s, 302, {}, "Location: small\r\n");
        server.answer(u"/loop"_s, 302, {}, "Location: loop\r\n");
        server.answer(u"/to-file"_s, 302, {}, "Location: file:///etc/hostname\r\n");
        server.answer(u"/to-ftp"_s, 302, {}, "Location: ftp://127.0.0.1/small\r\n");
        server.answer(u"/to-data"_s, 302, {}, "Location: data:text/plain,local\r\n");
        QUrl url = server.url(path);
        if (path.startsWith("http"_L1)) {
            qputenv("http_proxy", server.url({}).toEncoded());
            url = QUrl(path);
        } else if (path.isEmpty()) {
            QTcpServer closed;
            QVERIFY(closed.listen(QHostAddress::LocalHost));
            url = QUrl(u"http://127.0.0.1:%1/small"_s.arg(closed.serverPort()));
        }
        NetworkTransfer transfer;
        QStringList seen;
        QTimer answerer;
        connect(&answerer, &QTimer::timeout, this, [&seen] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                auto* box = qobject_cast<QMessageBox*>(widget);
                if (box && box->isVisible() && box->button(QMessageBox::Ok)) {
                    seen << u"box "_s + box->windowTitle() + u'|' + box->text();
                    box->button(QMessageBox::Ok)->click();
                }
            }
        });
        answerer.start(20);
        connect(NetworkTools::instance(), &NetworkTools::signalAuthenticationRequired, &transfer,
                [&seen](QNetworkReply* reply, QAuthenticator*, QString user, QString password) {
                    seen << u"asked %1 %2:%3"_s.arg(reply ? "reply" : "none", user, password);
                });
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        QSignalSpy progress(&transfer, &NetworkTransfer::signalProgress);
        transfer.start(url, u"user"_s, u"pass"_s, quiet);
        if (code == QNetworkReply::OperationCanceledError) {
            QTRY_COMPARE(server.requests.size(), 1);
            transfer.slotCancel();
            transfer.slotCancel();
            QTRY_COMPARE(server.openConnections, 0);
        }
        QTRY_VERIFY_WITH_TIMEOUT(!complete.isEmpty(), 30000);

        QCOMPARE(server.requests, requests);
        QCOMPARE(seen, events);
        QCOMPARE(complete.size(), 1);
        QCOMPARE(complete[0],
                 (QVariantList{code == 0, QVariant::fromValue(QNetworkReply::NetworkError(code))}));
        const QString file = transfer.takeFileName();
        QCOMPARE(QFileInfo::exists(file), code == 0);
        if (code == 0) {
            const QByteArray body = m_bodies.value(QString::fromLatin1(requests.last()));
            QCOMPARE(fileBytes(file), body);
            QCOMPARE(progress.last()[0].toLongLong(), body.size());
        }
    }

    // With the system's proxy off, the one set before stays (http_proxy is a closed port).
    void setProxyKeptWithoutTheSystemProxy()
    {
        LoopbackHttpServer server;
        server.answer(u"/small"_s, 200, "page");
        BaseSettings().setValue(u"useSystemProxyConfiguration"_s, false);
        NetworkTools::networkAccessManager()->setProxy(
            QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, server.url({}).port()));
        QCOMPARE(::download(QUrl(u"http://127.0.0.2/small"_s), true, 20), "page");
        QCOMPARE(server.requests, QByteArrayList{"127.0.0.2/small"});
    }

    void download_data()
    {
        QTest::addColumn<QString>("path"); // "/silent" gets no answer
        QTest::addColumn<QString>("destination");
        QTest::newRow("moved to the destination") << "/small" << m_environment.path(u"saved"_s);
        QTest::newRow("silent server") << "/silent" << QString();
        QTest::newRow("empty path") << QString() << QString();
        QTest::newRow("full temp folder") << "/large" << m_environment.path(u"saved"_s);
    }

    void download()
    {
        QFETCH(QString, path);
        QFETCH(QString, destination);
        const bool full = QTest::currentDataTag() == "full temp folder"_L1;
        if (full && !inFullTempFolder("download"))
            return;
        QVERIFY(!full || putFile(destination, "kept"));
        LoopbackHttpServer server;
        server.answer(u"/small"_s, 200, m_bodies["/small"]);
        server.answer(u"/large"_s, 200, m_bodies["/large"]);
        const bool silent = path == "/silent"_L1;
        QElapsedTimer elapsed;
        elapsed.start();
        const QByteArray result = ::download(server.url(path), destination, true, silent ? 1 : 30);

        // Only the silent server holds the call until its limit.
        QVERIFY(silent ? elapsed.elapsed() >= 900 : elapsed.elapsed() < 15000);
        QCOMPARE(server.requests.size(), path.isEmpty() ? 0 : 1);
        const QByteArray body = path == "/small"_L1 ? m_bodies["/small"] : QByteArray();
        QCOMPARE(result, destination.isEmpty() ? body : QByteArray());
        if (!destination.isEmpty())
            QCOMPARE(fileBytes(destination), full ? QByteArray("kept") : body);
        QCOMPARE(QDir(tempFolder()).entryList(QDir::Files), QStringList());
    }
};

QTEST_APPLESS_MAIN(tst_Network)
#include "tst_network.moc"
