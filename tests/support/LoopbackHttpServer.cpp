#include "LoopbackHttpServer.h"

#include <QFile>
#include <QProcess>
#include <QSslKey>
#include <QSslServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;

namespace {

// A fresh key and certificate, or an empty configuration when openssl fails.
QSslConfiguration selfSignedConfiguration(const QString& folder)
{
    const QString key = folder + u"/key.pem"_s;
    const QString certificate = folder + u"/certificate.pem"_s;
    if (QProcess::execute(u"openssl"_s, {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
                                         u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s,
                                         u"2"_s, u"-subj"_s, u"/CN=127.0.0.1"_s, u"-keyout"_s, key,
                                         u"-out"_s, certificate})
        != 0)
        return {};
    QFile keyFile(key);
    if (!keyFile.open(QIODevice::ReadOnly))
        return {};
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate::fromPath(certificate).value(0));
    configuration.setPrivateKey(QSslKey(keyFile.readAll(), QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    return configuration;
}

} // namespace

LoopbackHttpServer::LoopbackHttpServer(bool tls)
    : m_tls(tls)
{
    if (tls) {
        const QSslConfiguration configuration = selfSignedConfiguration(m_dir.path());
        if (configuration.privateKey().isNull())
            return;
        auto* server = new QSslServer(this);
        server->setSslConfiguration(configuration);
        m_server = server;
    } else {
        m_server = new QTcpServer(this);
    }
    connect(m_server, &QTcpServer::pendingConnectionAvailable, this,
            &LoopbackHttpServer::acceptConnections);
    m_server->listen(QHostAddress::LocalHost);
}

LoopbackHttpServer::~LoopbackHttpServer() = default;

bool LoopbackHttpServer::isListening() const
{
    return m_server && m_server->isListening();
}

QUrl LoopbackHttpServer::url(const QString& path) const
{
    return QUrl(u"%1://127.0.0.1:%2%3"_s.arg(m_tls ? u"https"_s : u"http"_s)
                    .arg(m_server ? m_server->serverPort() : 0)
                    .arg(path));
}

void LoopbackHttpServer::answer(const QString& path, int status, const QByteArray& body,
                                const QByteArray& headers)
{
    m_answers.insert(path, "HTTP/1.1 " + QByteArray::number(status)
                               + " Test\r\nContent-Length: " + QByteArray::number(body.size())
                               + "\r\n" + headers + "\r\n" + body);
}

void LoopbackHttpServer::acceptConnections()
{
    while (QTcpSocket* socket = m_server->nextPendingConnection()) {
        m_buffers.insert(socket, {});
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
        connect(socket, &QTcpSocket::disconnected, this, [this, socket] {
            m_buffers.remove(socket);
            socket->deleteLater();
        });
        serve(socket);
    }
}

void LoopbackHttpServer::serve(QTcpSocket* socket)
{
    QByteArray& buffer = m_buffers[socket];
    buffer += socket->readAll();
    for (qsizetype end; (end = buffer.indexOf("\r\n\r\n")) >= 0;) {
        const QList<QByteArray> lines = buffer.left(end).split('\n');
        buffer.remove(0, end + 4);
        Request request;
        request.target = lines.value(0).split(' ').value(1);
        for (const QByteArray& line : lines.mid(1)) {
            const qsizetype colon = line.indexOf(':');
            request.headers.insert(line.left(colon).trimmed().toLower(),
                                   line.mid(colon + 1).trimmed());
        }
        m_requests.append(request);
        const auto found = m_answers.constFind(QUrl::fromEncoded(request.target).path());
        if (found != m_answers.constEnd())
            socket->write(*found);
    }
}
