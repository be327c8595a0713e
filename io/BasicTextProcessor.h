#pragma once

#include <QCoreApplication>
#include <QString>

class BasicTextProcessor
{
    Q_DECLARE_TR_FUNCTIONS(BasicTextProcessor)

public:
    // A byte count as text, such as "1.5 KB". With keepDecimal whole numbers keep one decimal.
    static QString formatBytes(qint64 bytes, bool keepDecimal = false);
};
