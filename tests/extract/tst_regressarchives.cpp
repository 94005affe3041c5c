#include "extract/bytesource.h"
#include "extract/verdict.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <array>
#include <string>

// The archives that a library for such files tries itself with, sound ones and damaged ones, and
// what becomes of each. They came with the distribution's source package of it; regress/LICENSE is
// theirs.
class TestRegressArchives : public QObject
{
    Q_OBJECT

private slots:
    void everyArchiveIsListed();
    void verdict_data();
    void verdict();
};

namespace
{
// What the encrypted ones are locked with, older ones with the others.
const std::array<const char *, 3> passwords{"foofoofoo", "foo", "no-entropy"};

QByteArray contentOf(const QString &name)
{
    QFile file(QStringLiteral(":/regress/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// One archive a line: its name, a tab, "accepted" or why it is refused.
QList<QByteArray> expectations()
{
    return contentOf(QStringLiteral("expected.txt")).trimmed().split('\n');
}
} // namespace

void TestRegressArchives::everyArchiveIsListed()
{
    const QStringList archives =
        QDir(QStringLiteral(":/regress")).entryList({QStringLiteral("*.zip")});
    QVERIFY(archives.size() > 100);
    QCOMPARE(expectations().size(), archives.size());
}

void TestRegressArchives::verdict_data()
{
    QTest::addColumn<QByteArray>("archive");
    QTest::addColumn<QByteArray>("expected");
    const QList<QByteArray> lines = expectations();
    for (const QByteArray &line : lines) {
        const int tab = line.indexOf('\t');
        QTest::newRow(line.left(tab).constData())
            << contentOf(QString::fromLatin1(line.left(tab))) << line.mid(tab + 1);
    }
}

void TestRegressArchives::verdict()
{
    QFETCH(QByteArray, archive);
    QFETCH(QByteArray, expected);
    QVERIFY(!archive.isEmpty());
    const std::string bytes = archive.toStdString();
    Extract::Verdict verdict;
    for (const char *password : passwords) {
        verdict = Extract::verified(Extract::MemoryBytes(bytes), password);
        if (verdict.reason != "the password is wrong") {
            break;
        }
    }
    QCOMPARE(verdict.accepted ? QByteArray("accepted") : QByteArray::fromStdString(verdict.reason),
             expected);
}

QTEST_APPLESS_MAIN(TestRegressArchives)
#include "tst_regressarchives.moc"
