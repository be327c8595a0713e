#include "MailHandler.h"

#include <QProcess>

void whenMailHandlerKnown(QObject* context, const std::function<void(bool)>& answer)
{
    // xdg-open asks xdg-mime the same question; it reads the user's and the system's
    // mimeapps.list and the desktop files' MIME types.
    auto* query = new QProcess(context);
    QObject::connect(query, &QProcess::finished, context, [query, answer](int exitCode) {
        query->deleteLater();
        answer(exitCode == 0 && !query->readAllStandardOutput().trimmed().isEmpty());
    });
    QObject::connect(query, &QProcess::errorOccurred, context,
                     [query, answer](QProcess::ProcessError error) {
                         if (error != QProcess::FailedToStart)
                             return;
                         query->deleteLater();
                         answer(false);
                     });
    query->start(QStringLiteral("xdg-mime"), {QStringLiteral("query"), QStringLiteral("default"),
                                              QStringLiteral("x-scheme-handler/mailto")});
}
