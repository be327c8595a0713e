#include "ReportExport.h"

#include "MailHandler.h"
#include "ReportBundle.h"
#include "ReportDocument.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMessageBox>
#include <QMimeData>
#include <QScreen>
#include <QStandardPaths>
#include <QUrl>
#include <QUrlQuery>
#include <QWidget>

#include <cmath>

#ifndef CORVANTA_SUPPORT_EMAIL
#define CORVANTA_SUPPORT_EMAIL "support@kelvanmoor.com"
#endif

namespace {

double screenRatio()
{
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->devicePixelRatio() : 1.0;
}

// Device ratio and print resolution of the primary screen, so the picture keeps its real size.
void describeForScreen(QImage& image, double ratio)
{
    image.setDevicePixelRatio(ratio);
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    const QSizeF millimetres = screen->physicalSize();
    const QSize pixels = screen->geometry().size();
    if (millimetres.width() > 0)
        image.setDotsPerMeterX(int(pixels.width() * ratio * 1000 / millimetres.width()));
    if (millimetres.height() > 0)
        image.setDotsPerMeterY(int(pixels.height() * ratio * 1000 / millimetres.height()));
}

} // namespace

QString supportEmailAddress()
{
    return QStringLiteral(CORVANTA_SUPPORT_EMAIL);
}

QString reportText(const SupportDataMap& table)
{
    return ReportDocument::fromTable(table, false).text();
}

void copyReport(const SupportDataMap& table)
{
    auto* mimeData = new QMimeData;
    mimeData->setText(reportText(table));
    QGuiApplication::clipboard()->setMimeData(mimeData, QClipboard::Clipboard);
}

QString reportFolderName(const QDateTime& now)
{
    return QStringLiteral("Corvanta Support Report ")
           + now.toUTC().toString(Qt::ISODate).remove(QLatin1Char(':'));
}

QString saveReport(const SupportDataMap& table)
{
    return saveReportIn(
        table, QFileDialog::getExistingDirectory(
                   nullptr, QCoreApplication::translate("ReportExport", "Select Folder"),
                   desktopFolder(), QFileDialog::ShowDirsOnly | QFileDialog::DontResolveSymlinks));
}

QString saveReportIn(const SupportDataMap& table, const QString& parent)
{
    if (parent.isEmpty())
        return QCoreApplication::translate("ReportExport",
                                           "Report not saved: no folder was chosen.");
    QString folder;
    if (saveReportBundle(parent, QDateTime::currentDateTimeUtc(), reportText(table),
                         reportPicture(table), &folder))
        return QCoreApplication::translate("ReportExport", "Report saved in %1")
            .arg(QDir::toNativeSeparators(folder));
    if (!QFileInfo(folder).isDir())
        return QCoreApplication::translate("ReportExport",
                                           "Report not saved: no folder can be made in %1.")
            .arg(QDir::toNativeSeparators(parent));
    return QCoreApplication::translate(
               "ReportExport", "Report not saved in full: its files cannot be written in %1.")
        .arg(QDir::toNativeSeparators(folder));
}

QString saveReportTo(const SupportDataMap& table, const QString& parent, const QDateTime& now)
{
    // Failures are not shown: the text writer logs its own, a picture that cannot be saved is
    // left out.
    QString folder;
    saveReportBundle(parent, now, reportText(table), reportPicture(table), &folder);
    return folder;
}

QImage reportPicture(const SupportDataMap& table)
{
    QList<QImage> images;
    for (const auto& [kind, data] : table) {
        if (data)
            images << data->image();
    }
    return stackImages(images);
}

QUrl emailUrl(const QString& report)
{
    // Encoded in full as query values, so "&", "#", "+" and "%" in the report reach the mail
    // program as they are instead of ending the body or changing it.
    const auto encoded = [](const QString& value) {
        return QString::fromLatin1(QUrl::toPercentEncoding(value));
    };
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("subject"),
                       encoded(QStringLiteral("Corvanta Support Report")));
    query.addQueryItem(QStringLiteral("body"), encoded(report));
    QUrl url;
    url.setScheme(QStringLiteral("mailto"));
    url.setPath(supportEmailAddress());
    url.setQuery(query);
    return url;
}

void emailReport(const SupportDataMap& table, QWidget* window)
{
    const QUrl url = emailUrl(reportText(table));
    whenMailHandlerKnown(window, [url, window](bool handled) {
        if (handled && QDesktopServices::openUrl(url))
            return;
        QMessageBox box(window);
        box.setWindowTitle(QStringLiteral("Corvanta Support"));
        box.setText(QCoreApplication::translate(
                        "ReportExport", "Your email program failed to open.<br><br>Please use "
                                        "File > Save Report and attach the files in an email "
                                        "to %1")
                        .arg(supportEmailAddress()));
        box.setStyleSheet(QStringLiteral("QLabel{min-width: 550;}"));
        box.exec();
    });
}

QImage renderWidget(QWidget* widget)
{
    const double ratio = screenRatio();
    QImage image(qRound(widget->width() * ratio), qRound(widget->height() * ratio),
                 QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    describeForScreen(image, ratio);
    widget->render(&image, QPoint(0, 0), QRegion(),
                   QWidget::DrawWindowBackground | QWidget::DrawChildren);
    return image;
}

QImage stackImages(const QList<QImage>& images)
{
    int width = 0;
    int height = 0;
    for (const QImage& image : images) {
        width = std::max(width, image.width());
        height += image.height();
    }
    const double ratio = screenRatio();
    QImage stack(qRound(width * ratio), qRound(height * ratio), QImage::Format_ARGB32);
    if (stack.isNull())
        return stack;
    stack.fill(Qt::transparent);
    describeForScreen(stack, ratio);
    int top = 0;
    for (const QImage& image : images) {
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                stack.setPixelColor(x, top + y, image.pixelColor(x, y));
        }
        top += image.height();
    }
    return stack;
}

QString desktopFolder()
{
    // The desktop's own name for it, such as "Schreibtisch".
    return QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
}
