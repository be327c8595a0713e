#pragma once

#include <QStringList>

// Collects the debug messages logged while it lives, so tests can check the exact texts.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog&) = delete;
    MessageLog& operator=(const MessageLog&) = delete;

    QStringList messages() const;
};
