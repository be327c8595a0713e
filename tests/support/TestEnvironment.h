#pragma once

#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <memory>

// A private home for one test: HOME and every XDG folder point into a temporary directory that is
// removed afterwards, so no test reads or writes the real user's files.
class TestEnvironment
{
public:
    TestEnvironment();
    ~TestEnvironment();

    bool isValid() const;
    QString home() const;
    QString path(const QString& relative) const;
    // The same settings for a child process.
    QProcessEnvironment processEnvironment() const;

private:
    QTemporaryDir m_dir;
    QProcessEnvironment m_saved;
};
