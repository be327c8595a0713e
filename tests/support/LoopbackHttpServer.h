#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

// HTTP/1.1 on 127.0.0.1: each path's answers in turn, the last repeated, else silence; a proxied
// URL is answered by its path, so it is a forward proxy too. TLS has a self-signed certificate.
class LoopbackHttpServer
{
public:
    explicit LoopbackHttpServer(bool tls = false);

    QUrl url(const QString& path) const;
    // Header lines end with "\r\n".
    void answer(const QString& path, int status, const QByteArray& body = {},
                const QByteArray& headers = {});

    // Each request's path (host first when proxied), then its recordedHeaders' values (lower case).
    QByteArrayList requests;
    QByteArrayList recordedHeaders{"authorization"};
    int openConnections = 0;
    int delayMs = 0;

private:
    void serve(QTcpSocket* socket, QByteArrayList& lines);

    QTemporaryDir m_dir;
    std::unique_ptr<QTcpServer> m_server;
    QHash<QString, QByteArrayList> m_answers;
};
