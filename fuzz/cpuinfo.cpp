#include "FuzzSupport.h"
#include "SystemProfileParsers.h"

#include <QRegularExpression>

#include <cmath>
#include <cstring>

// The processor speed: /proc/cpuinfo's "cpu MHz", cpufreq's maximum and the speed text. Input: a
// double's eight bytes, then the file.

using namespace SystemProfileParsers;

namespace {

void checkSpeedText(double mhz)
{
    const QString text = cpuSpeedText(mhz);
    if (!(mhz > 0) || !std::isfinite(mhz)) {
        require(text.isEmpty(), "an unknown speed has no text");
        return;
    }
    // Below a megahertz it may be empty or "0 Ghz", beyond a terahertz in the exponent form.
    if (mhz < 1 || mhz >= 1e6)
        return;
    static const QRegularExpression form(QStringLiteral("^(\\d+(\\.\\d{1,2})?) Ghz$"));
    const QRegularExpressionMatch match = form.match(text);
    require(match.hasMatch(), "a speed is gigahertz with at most two decimals");
    require(std::abs(match.captured(1).toDouble() * 1000 - mhz) <= 5.0 + mhz * 1e-12,
            "a speed text is the speed rounded to ten megahertz");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    double mhz = 0;
    const size_t width = size < sizeof mhz ? 0 : sizeof mhz;
    std::memcpy(&mhz, data, width);
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data) + width, qsizetype(size - width));

    const double found = cpuInfoMHz(text);
    require(std::isfinite(found), "a cpuinfo speed is a number");
    checkSpeedText(found);
    checkSpeedText(mhz);
    checkSpeedText(maxFrequencyMHz(text));
    if (std::isfinite(mhz)) {
        const QString cpuinfo =
            QStringLiteral("cpu MHz\t\t: %1\n").arg(QString::number(mhz, 'g', 17)) + text;
        require(cpuInfoMHz(cpuinfo) == mhz, "the first cpu MHz line is read");
    }
    return 0;
}
