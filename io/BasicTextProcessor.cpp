#include "BasicTextProcessor.h"

#include <cmath>

QString BasicTextProcessor::formatBytes(qint64 bytes, bool keepDecimal)
{
    if (bytes == 1)
        return tr("1 byte");

    const QString units[] = {tr("bytes"), tr("KB"), tr("MB"), tr("GB"), tr("TB")};
    double amount = double(bytes);
    int unit = 0;
    while (amount >= 1024.0 && unit < 4) {
        amount *= 0.0009765625;
        ++unit;
    }
    // Rounded only after the unit is chosen, so 1048575 bytes prints as 1024 KB.
    amount = std::round(amount * 10.0) / 10.0;
    QString number = QStringLiteral("%1").arg(amount, 0, 'g', -1);
    if (keepDecimal && amount == std::floor(amount))
        number += QStringLiteral(".0");
    return QStringLiteral("%1 %2").arg(number, units[unit]);
}
