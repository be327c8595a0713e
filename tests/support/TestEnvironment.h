#pragma once

#include <QProcessEnvironment>
#include <QTemporaryDir>

// A private home for one test: HOME, every XDG folder and Windows' folders of the user point into
// a temporary directory that is removed afterwards, so no test reads or writes the real user's
// files.
class TestEnvironment
{
public:
    TestEnvironment();
    ~TestEnvironment();

    bool isValid() const { return m_dir.isValid(); }
    QString home() const { return m_dir.path(); }
    QString path(const QString& relative) const { return m_dir.filePath(relative); }

private:
    QTemporaryDir m_dir;
    QProcessEnvironment m_saved;
    QStringList m_savedFolders; // Windows' folders of the user
};

// For expectations that differ by system.
#ifdef Q_OS_WIN
constexpr bool windows = true;
#else
constexpr bool windows = false;
#endif

// Writes the bytes, creating missing folders first.
bool putFile(const QString& path, const QByteArray& bytes);
// The file's bytes, or "<unreadable>".
QByteArray fileBytes(const QString& path);
