#pragma once

#include <QByteArrayList>
#include <QHash>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUrl>

#include <memory>

// A small HTTP/1.1 server on 127.0.0.1 for tests. It answers each request by its path from canned
// answers, given in the order they were added and the last one again after that, and stays silent
// for a path without one. A request naming a whole URL, as clients send it to a proxy, is answered
// by that URL's path, so the server is a forward proxy as well. With TLS it presents a self-signed
// certificate that it makes with openssl.
class LoopbackHttpServer
{
public:
    explicit LoopbackHttpServer(bool tls = false);

    QUrl url(const QString& path) const;
    // Header lines end with "\r\n".
    void answer(const QString& path, int status, const QByteArray& body = {},
                const QByteArray& headers = {});

    // Each request's path (after the host when proxied), then the values of the headers named in
    // recordedHeaders (in lower case) that it carries.
    QByteArrayList requests;
    QByteArrayList recordedHeaders{"authorization"};
    int openConnections = 0;
    // How long each answer waits before it goes out.
    int delayMs = 0;

private:
    void serve(QTcpSocket* socket, QByteArrayList& lines);

    QTemporaryDir m_dir;
    std::unique_ptr<QTcpServer> m_server;
    QHash<QString, QByteArrayList> m_answers;
};
