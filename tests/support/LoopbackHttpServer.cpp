#include "LoopbackHttpServer.h"
#include "TestEnvironment.h"

#include <QProcess>
#include <QSslKey>
#include <QSslServer>
#include <QTimer>

using namespace Qt::StringLiterals;

LoopbackHttpServer::LoopbackHttpServer(bool tls)
    : m_server(tls ? new QSslServer : new QTcpServer)
{
    if (auto* server = qobject_cast<QSslServer*>(m_server.get())) {
        // Should openssl fail, so does every handshake, and with it the test.
        const QString key = m_dir.filePath(u"key.pem"_s);
        const QString certificate = m_dir.filePath(u"certificate.pem"_s);
        QProcess::execute(u"openssl"_s,
                          {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                           u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-subj"_s,
                           u"/CN=127.0.0.1"_s, u"-keyout"_s, key, u"-out"_s, certificate});
        QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
        configuration.setLocalCertificate(QSslCertificate::fromPath(certificate).value(0));
        configuration.setPrivateKey(QSslKey(fileBytes(key), QSsl::Ec));
        server->setSslConfiguration(configuration);
    }
    QTcpServer* server = m_server.get();
    QObject::connect(server, &QTcpServer::pendingConnectionAvailable, server, [this, server] {
        while (QTcpSocket* socket = server->nextPendingConnection()) {
            ++openConnections;
            auto lines = std::make_shared<QByteArrayList>();
            auto read = [this, socket, lines] {
                serve(socket, *lines);
            };
            QObject::connect(socket, &QTcpSocket::readyRead, socket, read);
            QObject::connect(socket, &QTcpSocket::disconnected, socket, [this, socket] {
                --openConnections;
                socket->deleteLater();
            });
            read();
        }
    });
    server->listen(QHostAddress::LocalHost);
}

QUrl LoopbackHttpServer::url(const QString& path) const
{
    const bool tls = qobject_cast<QSslServer*>(m_server.get());
    return QUrl(
        u"%1://127.0.0.1:%2%3"_s.arg(tls ? "https" : "http").arg(m_server->serverPort()).arg(path));
}

void LoopbackHttpServer::answer(const QString& path, int status, const QByteArray& body,
                                const QByteArray& headers)
{
    m_answers[path].append("HTTP/1.1 " + QByteArray::number(status) + " Test\r\nContent-Length: "
                           + QByteArray::number(body.size()) + "\r\n" + headers + "\r\n" + body);
}

// Gathers one request's lines up to the blank line, then answers it.
void LoopbackHttpServer::serve(QTcpSocket* socket, QByteArrayList& lines)
{
    while (socket->canReadLine()) {
        const QByteArray line = socket->readLine().trimmed();
        if (!line.isEmpty()) {
            lines << line;
            continue;
        }
        const QUrl target = QUrl::fromEncoded(lines.value(0).split(' ').value(1));
        QByteArray request = (target.host() + target.path()).toUtf8();
        for (const QByteArray& header : std::as_const(lines)) {
            const QByteArray name = header.left(header.indexOf(':')).toLower();
            if (recordedHeaders.contains(name))
                request += ' ' + header.mid(name.size() + 1).trimmed();
        }
        requests << request;
        lines.clear();
        QByteArrayList& queue = m_answers[target.path()];
        const QByteArray reply = queue.size() > 1 ? queue.takeFirst() : queue.value(0);
        QTimer::singleShot(delayMs, socket, [socket, reply] { socket->write(reply); });
    }
}
