#include "SupportSystemData.h"
#include "SupportSystemTab.h"
#include "TestEnvironment.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

// Answers each request from the bodies queued for its target, in order; a null body is never
// answered. Keeps the request heads it saw.
class LoopbackServer : public QTcpServer
{
public:
    LoopbackServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = nextPendingConnection())
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
        });
    }

    QUrl url(const QString& path) const
    {
        return QUrl(u"http://127.0.0.1:%1%2"_s.arg(serverPort()).arg(path));
    }

    QMap<QByteArray, QList<QByteArray>> bodies;
    QList<QByteArray> heads;

private:
    void answer(QTcpSocket* socket)
    {
        if (!socket->peek(65536).contains("\r\n\r\n"))
            return;
        const QByteArray head = socket->readAll();
        heads << head;
        QList<QByteArray>& queue = bodies[head.split(' ').value(1)];
        const QByteArray body = queue.isEmpty() ? QByteArray("") : queue.takeFirst();
        if (body.isNull())
            return;
        socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: "
                      + QByteArray::number(body.size()) + "\r\n\r\n" + body);
        socket->disconnectFromHost();
    }
};

const QByteArray addressTarget = "/?format=json";
const QByteArray probeTarget = "/myip.php";

} // namespace

class tst_SupportSystemTab : public QObject
{
    Q_OBJECT

private slots:
    // The button that the benchmark is started from, below the text.
    void benchmarkButton()
    {
        SupportSystemData data(QUrl(u"http://127.0.0.1:1/"_s), QUrl(u"http://127.0.0.1:1/"_s));
        SupportSystemTab tab(&data);
        tab.updateContent();
        auto* button = tab.findChild<QPushButton*>(u"benchmarkButton"_s);
        QVERIFY(button);
        QCOMPARE(button->text(), u"Benchmark File I/O"_s);
        auto* outer = qobject_cast<QGridLayout*>(tab.layout());
        QVERIFY(outer && qobject_cast<QScrollArea*>(outer->itemAtPosition(0, 0)->widget()));
        QCOMPARE(outer->itemAtPosition(1, 0)->layout()->indexOf(button), 0);
    }

    // A cancelled folder choice runs nothing; each chosen folder adds its report below the others.
    void benchmarkRuns()
    {
        TestEnvironment home;
        SupportSystemData data(QUrl(u"http://127.0.0.1:1/"_s), QUrl(u"http://127.0.0.1:1/"_s));
        SupportSystemTab tab(&data);
        tab.updateContent();
        auto* button = tab.findChild<QPushButton*>(u"benchmarkButton"_s);
        auto* label = tab.findChild<QLabel*>();
        QVERIFY(button && label);
        const auto press = [&](const QString& folder) {
            QTimer::singleShot(0, this, [folder] {
                auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                QVERIFY(dialog);
                QCOMPARE(dialog->windowTitle(), u"Choose Location"_s);
                if (folder.isEmpty())
                    return dialog->reject();
                dialog->setDirectory(folder);
                static_cast<QDialog*>(dialog)->accept();
            });
            button->click();
        };
        const QString first = home.path(u"first"_s);
        const QString second = home.path(u"second"_s);
        QVERIFY(QDir().mkpath(first) && QDir().mkpath(second));

        press(QString());
        QVERIFY(!label->text().contains(u"CREATE min="_s));
        press(first);
        QCOMPARE(label->text().count(u"CREATE min="_s), 1);
        press(second);
        const QString text = label->text();
        QCOMPARE(text.count(u"RANDOM_SEEK min="_s), 2);
        QVERIFY2(text.indexOf(first + u"<br>CREATE"_s) < text.indexOf(second + u"<br>CREATE"_s)
                     && text.indexOf(first) >= 0,
                 qPrintable(text.right(400)));
        QCOMPARE(QDir(first).entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::Hidden),
                 QStringList());
    }

    void network_data()
    {
        QTest::addColumn<QByteArrayList>("addressBodies");
        QTest::addColumn<QByteArray>("probeBody");
        QTest::addColumn<QString>("shown");
        const QByteArray first = R"({"ip":"203.0.113.7"})";
        QTest::newRow("address shown, probe answers")
            << QByteArrayList{first} << QByteArray("203.0.113.7")
            << u"203.0.113.7<br><br>"
               "WinInet:            OK"_s;
        QTest::newRow("later address replaces it")
            << QByteArrayList{first, R"({"ip":"198.51.100.2"})"} << QByteArray("x")
            << u"  198.51.100.2<br>"_s;
        QTest::newRow("garbage keeps the address") << QByteArrayList{first, "<html>busy</html>"}
                                                   << QByteArray("x") << u"  203.0.113.7<br>"_s;
        QTest::newRow("address not a string") << QByteArrayList{R"({"ip":7})"} << QByteArray("x")
                                              << u"External IP Address:<br>  <br>"_s;
        QTest::newRow("probe with an empty body")
            << QByteArrayList{first} << QByteArray("") << u"WinInet:            Error"_s;
        QTest::newRow("silent probe given up on")
            << QByteArrayList{first} << QByteArray() << u"WinInet:            Error"_s;
        QTest::newRow("silent address service given up on")
            << QByteArrayList{QByteArray()} << QByteArray("x")
            << u"External IP Address:<br>  <br><br>WinInet:            OK"_s;
    }

    // The page against a loopback address service and probe page: each refresh asks once, the
    // answer shows without another load, and a silent service is given up on.
    void network()
    {
        QFETCH(QByteArrayList, addressBodies);
        QFETCH(QByteArray, probeBody);
        QFETCH(QString, shown);
        TestEnvironment home;
        LoopbackServer server;
        server.bodies[addressTarget] = addressBodies;
        for (int i = 0; i < addressBodies.size(); ++i)
            server.bodies[probeTarget] << probeBody;
        SupportSystemData data(server.url(u"/"_s), server.url(QString::fromLatin1(probeTarget)));
        SupportSystemTab tab(&data);
        QSignalSpy replies(&data, &SupportSystemData::signalExternalIpFinished);
        // Errors of an earlier request are not shown once the next one starts.
        emit data.signalSslErrors({QSslError(QSslError::SelfSignedCertificate)});

        for (int i = 0; i < addressBodies.size(); ++i) {
            tab.updateContent();
            // A silent service must not hold the page: it shows before the answer comes.
            if (addressBodies.at(i).isNull())
                QCOMPARE(replies.size(), i);
            QVERIFY(replies.size() == i + 1 || replies.wait(20000));
        }
        QTest::qWait(300);

        const QString page = tab.findChild<QLabel*>()->text();
        QVERIFY2(page.contains(shown), qPrintable(page));
        QVERIFY(!page.contains(u"SSL Errors:"_s));
        QCOMPARE(replies.size(), addressBodies.size());
        QCOMPARE(server.heads.count(), 2 * addressBodies.size());
        for (const QByteArray& head : std::as_const(server.heads)) {
            if (head.startsWith("GET " + probeTarget + " "))
                QVERIFY(head.contains("\r\nUser-Agent: Corvannta Support\r\n"));
            else
                QVERIFY(head.startsWith("GET " + addressTarget + " "));
        }
    }
};

QTEST_MAIN(tst_SupportSystemTab)
#include "tst_supportsystemtab.moc"
