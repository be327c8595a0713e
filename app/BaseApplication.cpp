#include "BaseApplication.h"

#include "SystemErrorText.h"

#include <QDebug>
#include <QFontDatabase>
#include <QFontInfo>
#include <QLibraryInfo>
#include <QLocale>
#include <QMutex>
#include <QMutexLocker>
#include <QPointer>
#include <QTranslator>

struct BaseApplication::Private
{
    bool inEventLoop = false;
    QList<QPointer<QObject>> ownedObjects;
    QMutex ownedObjectsMutex;
};

BaseApplication::BaseApplication(const QString& applicationName, const QString& applicationVersion,
                                 int& argc, char** argv)
    : QApplication(argc, argv)
    , d(std::make_unique<Private>())
{
    setOrganizationName(QStringLiteral("Kelvanmoor"));
    setOrganizationDomain(QStringLiteral("kelvanmoor.com"));
    setApplicationName(applicationName);
    setApplicationVersion(applicationVersion);
}

BaseApplication::~BaseApplication()
{
    emit signalPrepareForDestruction();
    QMutexLocker locker(&d->ownedObjectsMutex);
    for (const QPointer<QObject>& object : std::as_const(d->ownedObjects))
        delete object.data();
    d->ownedObjects.clear();
}

int BaseApplication::exec()
{
    d->inEventLoop = true;
    const int result = QApplication::exec();
    d->inEventLoop = false;
    return result;
}

bool BaseApplication::isInEventLoop() const
{
    return d->inEventLoop;
}

BaseApplication* BaseApplication::instance()
{
    auto* application = qobject_cast<BaseApplication*>(QCoreApplication::instance());
    if (!application)
        qDebug() << "ERROR! Attempting to retrieve BaseApplication instance without first "
                    "allocating one!";
    return application;
}

void BaseApplication::deleteBeforeShutdown(QObject* object)
{
    if (!object)
        return;
    QMutexLocker locker(&d->ownedObjectsMutex);
    d->ownedObjects.append(QPointer<QObject>(object));
}

QStringList BaseApplication::monospaceFontFamilies()
{
    QStringList families{QStringLiteral("Consolas"), QStringLiteral("Lucida Sans Typewriter"),
                         QStringLiteral("Courier"), QStringLiteral("Courier New"),
                         QStringLiteral("monospace")};
    // Last, a fixed-pitch family the machine has: the one its own fixed font resolves to, else
    // the first the font database knows. Wine has none of the names above, and "monospace" is
    // only an alias of fontconfig, which may resolve to a proportional font.
    const QFontInfo systemFixed(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    QString fallback = systemFixed.fixedPitch() ? systemFixed.family() : QString();
    const QStringList installed = QFontDatabase::families();
    for (auto family = installed.cbegin(); fallback.isEmpty() && family != installed.cend();
         ++family) {
        // "@" names the vertical variant of a Windows font.
        if (QFontDatabase::isFixedPitch(*family) && !family->startsWith(QLatin1Char('@')))
            fallback = *family;
    }
    if (!fallback.isEmpty() && !families.contains(fallback))
        families.append(fallback);
    return families;
}

QFont BaseApplication::monospaceFont()
{
    return QFont(QStringLiteral("monospace"));
}

QString BaseApplication::windowsErrorText(const QString& prefix, uint code)
{
    QString message = systemErrorText(code).trimmed();
    if (message.isEmpty())
        message = QStringLiteral("Unknown Error");
    return QStringLiteral("%1 %2 [%3]").arg(prefix, message, QString::number(code));
}

void BaseApplication::slotTryQuitting()
{
    tryQuitting();
}

void BaseApplication::tryQuitting()
{
    QCoreApplication::quit();
}

void BaseApplication::installTranslations(const QString& catalogue)
{
    QCoreApplication* application = QCoreApplication::instance();
    auto* own = new QTranslator(application);
    if (!own->load(QLocale(), catalogue, QStringLiteral("_"), QStringLiteral(":/i18n"))) {
        delete own;
        return;
    }
    installTranslator(own);
    // Qt's dialogs and buttons follow in the same language, so no dialog mixes two.
    auto* qt = new QTranslator(application);
    if (qt->load(QLocale(own->language()), QStringLiteral("qtbase"), QStringLiteral("_"),
                 QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        installTranslator(qt);
    else
        delete qt;
}
