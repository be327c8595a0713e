#pragma once

#include <QApplication>
#include <QFont>
#include <QStringList>

#include <memory>

// What any desktop tool of this family needs: identity, objects to delete before the application
// object itself, an orderly quit hook, the monospace fonts and operating-system error texts.
class BaseApplication : public QApplication
{
    Q_OBJECT

public:
    BaseApplication(const QString& applicationName, const QString& applicationVersion, int& argc,
                    char** argv);
    ~BaseApplication() override;

    int exec();
    bool isInEventLoop() const;

    static BaseApplication* instance();

    // Safe from any thread; null is ignored. Objects deleted earlier by their owners are skipped.
    void deleteBeforeShutdown(QObject* object);

    // The fixed-pitch families to look for, in order of preference; needs the GUI application.
    static QStringList monospaceFontFamilies();
    static QFont monospaceFont();
    static QString windowsErrorText(const QString& prefix, uint code);

signals:
    void signalPrepareForDestruction();

public slots:
    void slotTryQuitting();

    // Installs the translation for the user's language from ":/i18n/<catalogue>_<language>.qm",
    // then Qt's own for that language, into the running application of any kind. Without one of
    // its own the program stays in English.
    static void installTranslations(const QString& catalogue);

protected:
    virtual void tryQuitting();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
