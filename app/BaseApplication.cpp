#include "BaseApplication.h"

#include "SystemErrorText.h"

#include <QDebug>
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
    return {QStringLiteral("Consolas"), QStringLiteral("Lucida Sans Typewriter"),
            QStringLiteral("Courier"), QStringLiteral("Courier New"), QStringLiteral("monospace")};
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
