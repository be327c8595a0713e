#pragma once

#include "NetworkTransfer.h"

#include <QByteArray>

// The transfer behind the blocking download functions. It remembers that it has completed, so a
// wait that would begin after an immediate completion (a URL without a path) is never entered,
// and whether it succeeded.
class Downloader : public NetworkTransfer
{
    Q_OBJECT

public:
    explicit Downloader(QObject* parent = nullptr);
    ~Downloader() override;

    bool isComplete() const;
    bool isSuccess() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

// Fetches the URL in a local event loop, giving up after the time limit. With a destination path
// the file is moved there and the result is empty; otherwise the result is the body. A failed or
// timed-out download gives an empty result and leaves the destination as it was.
QByteArray download(const QUrl& url, const QString& destinationPath, bool quiet,
                    int timeoutSeconds);
QByteArray download(const QUrl& url, bool quiet, int timeoutSeconds);
