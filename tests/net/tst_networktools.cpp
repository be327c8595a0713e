#include "BaseApplication.h"
#include "BaseSettings.h"
#include "LoopbackHttpServer.h"
#include "NetworkTools.h"
#include "NetworkTransfer.h"
#include "TestEnvironment.h"

#include <QAuthenticator>
#include <QDir>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray deadProxy = "http://127.0.0.1:9";

bool finished(QNetworkReply* reply)
{
    return reply
           && (reply->isFinished() || QSignalSpy(reply, &QNetworkReply::finished).wait(20000));
}

} // namespace

// The application object is the test's own, so that the last case can shut it down.
class tst_NetworkTools : public QObject
{
    Q_OBJECT

    // Before the first QSettings, which fixes its folders for the whole process.
    TestEnvironment m_environment;
    int m_argc = 1;
    char m_name[20] = "tst_networktools";
    char* m_argv[2] = {m_name, nullptr};
    std::unique_ptr<BaseApplication> m_application;

private slots:
    void initTestCase()
    {
        QVERIFY(m_environment.isValid());
        qRegisterMetaType<QAuthenticator*>();
        m_application =
            std::make_unique<BaseApplication>(u"Corvanta"_s, u"1.0.5"_s, m_argc, m_argv);
    }

    void cleanup()
    {
        QDir(m_environment.path(u".config"_s)).removeRecursively();
        qputenv("http_proxy", deadProxy);
        qputenv("no_proxy", "localhost,127.0.0.1,::1");
    }

    void errorText_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("name");
        const std::pair<int, const char*> rows[] = {
            {0, "NoError"},
            {1, "Connection Refused"},
            {2, "Remote Host Closed"},
            {3, "Host Not Found"},
            {4, "Timeout"},
            {5, "Operation Canceled"},
            {6, "SSL Handshake Failed"},
            {7, "Temporary Network Failure"},
            {8, "Unknown Error"},
            {99, "Unknown Network Error"},
            {101, "Proxy Connection Refused"},
            {102, "Proxy Connection Closed"},
            {103, "Proxy Not Found"},
            {104, "Proxy Timeout"},
            {105, "Proxy Authentication Required"},
            {199, "Unknown Proxy Error"},
            {201, "Content Access Denied"},
            {202, "Content Operation Not Permitted"},
            {203, "Content Not Found"},
            {204, "Authentication Required"},
            {205, "Content ReSend Error"},
            {206, "Unknown Error"},
            {299, "Unknown Content Error"},
            {301, "Protocol Unknown"},
            {302, "Protocol Invalid Operation"},
            {399, "Protocol Failure"},
            {499, "Unknown Error"},
        };
        for (const auto& [code, name] : rows)
            QTest::addRow("%d", code) << code << QString::fromLatin1(name);
    }

    void errorText()
    {
        QFETCH(int, code);
        QFETCH(QString, name);
        QCOMPARE(NetworkTools::errorText(QNetworkReply::NetworkError(code)),
                 u"Error Code: %1 (%2)"_s.arg(code).arg(name));
    }

    void authentication_data()
    {
        QTest::addColumn<bool>("stored");
        QTest::addColumn<bool>("disableDefaultAuth");
        QTest::addColumn<QByteArrayList>("authorizations");
        QTest::addColumn<QStringList>("defaults");
        // The stored pair goes out once; refused, it is offered to the signal and not sent again.
        QTest::newRow("stored pair") << true << false << QByteArrayList{"", "Basic dXNlcjpwYXNz"}
                                     << QStringList{"user", "pass"};
        QTest::newRow("nothing stored")
            << false << false << QByteArrayList{""} << QStringList{"", ""};
        QTest::newRow("defaults disabled")
            << true << true << QByteArrayList{""} << QStringList{"", ""};
    }

    void authentication()
    {
        QFETCH(bool, stored);
        QFETCH(bool, disableDefaultAuth);
        QFETCH(QByteArrayList, authorizations);
        QFETCH(QStringList, defaults);
        LoopbackHttpServer server;
        server.answer(u"/secret"_s, 401, "denied", "WWW-Authenticate: Basic realm=\"test\"\r\n");
        NetworkTools* tools = NetworkTools::instance();
        // Another URL's pair is never used.
        tools->setCredentials(server.url(u"/other"_s), u"other"_s, u"other"_s);
        if (stored)
            tools->setCredentials(server.url(u"/secret"_s), u"user"_s, u"pass"_s);
        QSignalSpy asked(tools, &NetworkTools::signalAuthenticationRequired);
        QNetworkReply* reply = tools->get(server.url(u"/secret"_s));
        reply->setProperty("disableDefaultAuth", disableDefaultAuth);
        QVERIFY(finished(reply));

        QCOMPARE(reply->error(), QNetworkReply::AuthenticationRequiredError);
        QByteArrayList sent;
        for (const LoopbackHttpServer::Request& request : server.requests())
            sent << request.headers.value("authorization");
        QCOMPARE(sent, authorizations);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked[0][0].value<QNetworkReply*>(), reply);
        QCOMPARE((QStringList{asked[0][2].toString(), asked[0][3].toString()}), defaults);
        reply->deleteLater();
    }

    void proxyAuthentication()
    {
        LoopbackHttpServer proxy;
        proxy.answer(u"/page"_s, 407, {}, "Proxy-Authenticate: Basic realm=\"proxy\"\r\n");
        qputenv("http_proxy", proxy.url({}).toEncoded());
        NetworkTools* tools = NetworkTools::instance();
        QSignalSpy asked(tools, &NetworkTools::signalAuthenticationRequired);
        QNetworkReply* reply = tools->get(QUrl(u"http://127.0.0.2:1/page"_s));
        QVERIFY(finished(reply));

        QCOMPARE(reply->error(), QNetworkReply::ProxyAuthenticationRequiredError);
        QCOMPARE(proxy.requests().value(0).target, "http://127.0.0.2:1/page");
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked[0][0].value<QNetworkReply*>(), nullptr);
        QVERIFY(asked[0][1].value<QAuthenticator*>());
        QCOMPARE((QStringList{asked[0][2].toString(), asked[0][3].toString()}),
                 (QStringList{"", ""}));
        reply->deleteLater();
    }

    void applyProxy_data()
    {
        QTest::addColumn<QVariant>("useSystem"); // invalid: the key is absent
        QTest::addColumn<bool>("earlierIsTest"); // else the manager's proxy is a dead one
        QTest::addColumn<bool>("systemIsTest");  // else http_proxy is a dead one
        QTest::addColumn<QString>("host");
        QTest::addColumn<bool>("proxied");
        QTest::newRow("false keeps the earlier proxy")
            << QVariant(false) << true << false << "127.0.0.2" << true;
        QTest::newRow("true takes the system's")
            << QVariant(true) << false << true << "127.0.0.2" << true;
        QTest::newRow("absent takes the system's")
            << QVariant() << false << true << "127.0.0.2" << true;
        QTest::newRow("system's no_proxy goes direct")
            << QVariant(true) << false << true << "127.0.0.1" << false;
    }

    void applyProxy()
    {
        QFETCH(QVariant, useSystem);
        QFETCH(bool, earlierIsTest);
        QFETCH(bool, systemIsTest);
        QFETCH(QString, host);
        QFETCH(bool, proxied);
        LoopbackHttpServer server;
        server.answer(u"/page"_s, 200, "page");
        const QUrl proxyUrl = server.url({});
        if (useSystem.isValid())
            BaseSettings().setValue(u"useSystemProxyConfiguration"_s, useSystem);
        NetworkTools::networkAccessManager()->setProxy(QNetworkProxy(
            QNetworkProxy::HttpProxy, u"127.0.0.1"_s, earlierIsTest ? proxyUrl.port() : 9));
        if (systemIsTest)
            qputenv("http_proxy", proxyUrl.toEncoded());
        QUrl url = server.url(u"/page"_s);
        url.setHost(host);
        QNetworkReply* reply = NetworkTools::instance()->get(url);
        QVERIFY(finished(reply));

        QCOMPARE(reply->error(), QNetworkReply::NoError);
        QCOMPARE(server.requests().value(0).target, proxied ? url.toEncoded() : "/page");
        reply->deleteLater();
    }

    // Last: takes the application, and with it the service, away.
    void shutdownDeletesTheService()
    {
        const QPointer<NetworkTools> tools = NetworkTools::instance();
        const QPointer<QNetworkAccessManager> manager = NetworkTools::networkAccessManager();
        QVERIFY(tools);
        QCOMPARE(manager->parent(), tools.data());
        m_application.reset();
        QVERIFY(tools.isNull());
        QVERIFY(manager.isNull());
        QCOMPARE(NetworkTools::instance(), nullptr);
        QCOMPARE(NetworkTools::networkAccessManager(), nullptr);

        // A transfer started now ends at once instead of waiting for ever.
        NetworkTransfer transfer;
        QSignalSpy complete(&transfer, &NetworkTransfer::signalComplete);
        transfer.start(QUrl(u"http://127.0.0.1:1/x"_s), {}, {}, true);
        QCOMPARE(complete.size(), 1);
        QCOMPARE(complete[0][0].toBool(), false);
        QCOMPARE(complete[0][1].value<QNetworkReply::NetworkError>(),
                 QNetworkReply::UnknownNetworkError);
    }
};

QTEST_APPLESS_MAIN(tst_NetworkTools)
#include "tst_networktools.moc"
