#include "FileNames.h"
#include "FuzzSupport.h"

// A file name's bytes survive the trip through text whatever they are, UTF-8 names read as UTF-8,
// and a mount table gives no more points than lines.

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString name = decodeFileName(bytes);
    require(encodeFileName(name) == bytes, "the bytes come back");
    QStringDecoder utf8(QStringDecoder::Utf8,
                        QStringDecoder::Flag::ConvertInitialBom | QStringDecoder::Flag::Stateless);
    const QString strict = utf8.decode(bytes);
    if (!utf8.hasError())
        require(name == strict, "UTF-8 reads as UTF-8");
    require(mountPointsFromMountInfo(bytes).size() <= bytes.count('\n') + 1,
            "one point at most for each line");
    return 0;
}
