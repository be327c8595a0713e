#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QTemporaryDir>
#include <QUrl>

class QTcpServer;
class QTcpSocket;

// A small HTTP/1.1 server on 127.0.0.1 for tests. It answers each request from a table of canned
// answers by path and records what it was asked. A request naming a whole URL (as clients send to
// a proxy) is answered by that URL's path, so the same server serves as a forward proxy. With TLS
// it presents a self-signed certificate that it makes with openssl.
class LoopbackHttpServer : public QObject
{
    Q_OBJECT

public:
    struct Request
    {
        QByteArray target;                     // as on the request line
        QHash<QByteArray, QByteArray> headers; // names in lower case
    };

    explicit LoopbackHttpServer(bool tls = false);
    ~LoopbackHttpServer() override;

    bool isListening() const;
    QUrl url(const QString& path) const;
    // Extra header lines end with "\r\n". A path without an answer gets none: the server stays
    // silent on that connection.
    void answer(const QString& path, int status, const QByteArray& body = {},
                const QByteArray& headers = {});
    QList<Request> requests() const { return m_requests; }
    int openConnections() const { return m_buffers.size(); }

private:
    void acceptConnections();
    void serve(QTcpSocket* socket);

    bool m_tls;
    QTemporaryDir m_dir;
    QTcpServer* m_server = nullptr;
    QHash<QString, QByteArray> m_answers;
    QList<Request> m_requests;
    QHash<QTcpSocket*, QByteArray> m_buffers;
};
