#include "SupportDisplayData.h"
#include "SupportDisplayTab.h"
#include "TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QGridLayout>
#include <QPushButton>
#include <QScrollArea>
#include <QTest>

namespace {

const QString applyText = QStringLiteral("Apply DPI Workaround");
const QString removeText = QStringLiteral("Remove DPI Workaround");

QPushButton* button(const QWidget& tab, const QString& text)
{
    for (QPushButton* candidate : tab.findChildren<QPushButton*>()) {
        if (candidate->text() == text)
            return candidate;
    }
    return nullptr;
}

} // namespace

class tst_SupportDisplayTab : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void layout();
    void applyThenRemove();
    void startsWithTheWorkaroundPresent();
    void failedWriteChangesNothing();

private:
    QByteArray readEnvironmentFile() const;
    QString environmentFile() const;

    std::unique_ptr<TestEnvironment> m_environment;
    SupportDisplayData m_display;
};

void tst_SupportDisplayTab::init()
{
    m_environment = std::make_unique<TestEnvironment>();
    QVERIFY(m_environment->isValid());
}

void tst_SupportDisplayTab::cleanup()
{
    m_environment.reset();
}

QString tst_SupportDisplayTab::environmentFile() const
{
    return m_environment->path(QStringLiteral(".config/environment.d/60-corvanta-support.conf"));
}

QByteArray tst_SupportDisplayTab::readEnvironmentFile() const
{
    QFile file(environmentFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_SupportDisplayTab::layout()
{
    SupportDisplayTab tab(&m_display);
    tab.updateContent();
    auto* outer = qobject_cast<QGridLayout*>(tab.layout());
    QVERIFY(outer);
    QVERIFY(qobject_cast<QScrollArea*>(outer->itemAtPosition(0, 0)->widget()));
    QLayoutItem* inner = outer->itemAtPosition(1, 0);
    QVERIFY(inner);
    QCOMPARE(inner->alignment(), Qt::AlignCenter);
    auto* buttons = qobject_cast<QGridLayout*>(inner->layout());
    QVERIFY(buttons);
    QCOMPARE(buttons->contentsMargins(), QMargins(5, 5, 5, 5));
    QCOMPARE(buttons->spacing(), 5);
    QCOMPARE(buttons->itemAtPosition(0, 0)->widget(), button(tab, removeText));
    QCOMPARE(buttons->itemAtPosition(0, 1)->widget(), button(tab, applyText));
    QCOMPARE(buttons->columnStretch(2), 1);
}

void tst_SupportDisplayTab::applyThenRemove()
{
    QDir().mkpath(QFileInfo(environmentFile()).absolutePath());
    QFile other(environmentFile());
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write("# set by hand\nEDITOR=vi\n");
    other.close();

    SupportDisplayTab tab(&m_display);
    tab.updateContent();
    tab.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tab));
    QPushButton* apply = button(tab, applyText);
    QPushButton* remove = button(tab, removeText);
    QVERIFY(apply && remove);
    QVERIFY(apply->isEnabled());
    QVERIFY(!remove->isEnabled());

    QTest::mouseClick(apply, Qt::LeftButton);
    QCOMPARE(readEnvironmentFile(),
             QByteArray("# set by hand\nEDITOR=vi\nQT_AUTO_SCREEN_SCALE_FACTOR=0\n"));
    QVERIFY(!apply->isEnabled());
    QVERIFY(remove->isEnabled());

    QTest::mouseClick(remove, Qt::LeftButton);
    QCOMPARE(readEnvironmentFile(), QByteArray("# set by hand\nEDITOR=vi\n"));
    QVERIFY(apply->isEnabled());
    QVERIFY(!remove->isEnabled());
}

void tst_SupportDisplayTab::startsWithTheWorkaroundPresent()
{
    QDir().mkpath(QFileInfo(environmentFile()).absolutePath());
    QFile file(environmentFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("QT_AUTO_SCREEN_SCALE_FACTOR=0\n");
    file.close();

    SupportDisplayTab tab(&m_display);
    tab.updateContent();
    QVERIFY(!button(tab, applyText)->isEnabled());
    QVERIFY(button(tab, removeText)->isEnabled());
}

void tst_SupportDisplayTab::failedWriteChangesNothing()
{
    // A folder where the file belongs: the write fails, for root too.
    QVERIFY(QDir().mkpath(environmentFile()));
    SupportDisplayTab tab(&m_display);
    tab.updateContent();
    tab.show();
    QVERIFY(QTest::qWaitForWindowExposed(&tab));
    QPushButton* apply = button(tab, applyText);
    QVERIFY(apply->isEnabled());
    QTest::mouseClick(apply, Qt::LeftButton);
    QVERIFY(apply->isEnabled());
    QVERIFY(!button(tab, removeText)->isEnabled());
    QVERIFY(QFileInfo(environmentFile()).isDir());
}

QTEST_MAIN(tst_SupportDisplayTab)
#include "tst_supportdisplaytab.moc"
