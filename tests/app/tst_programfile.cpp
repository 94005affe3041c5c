#include "support/relation.h"

#include <QCoreApplication>
#include <QFile>
#include <QTest>
#include <QXmlStreamReader>
#include <qt_windows.h>

#include <shellapi.h>

// What Windows reads of the program's file before it runs it.
class TestProgramFile : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void opensNoConsole();
    void iconHasAllSizes_data();
    void iconHasAllSizes();
    void version();
    void manifest();
    void cleanupTestCase();

private:
    // The first resource of this kind.
    QByteArray resource(WORD kind) const;

    HMODULE m_file = nullptr;
};

namespace
{
// RT_GROUP_ICON and RT_MANIFEST, whose own names are for the narrow calls here.
constexpr WORD iconGroup = 14;
constexpr WORD manifestKind = 24;

QString program()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/" EMBERWAKE_PROGRAM);
}

// The text of one entry of the version resource, in English and UTF-16.
QString entry(QByteArray &version, const char *name)
{
    const QString path = QStringLiteral("\\StringFileInfo\\040904b0\\") + QString::fromLatin1(name);
    void *value = nullptr;
    UINT length = 0;
    if (VerQueryValueW(version.data(), path.toStdWString().c_str(), &value, &length) == 0) {
        return {};
    }
    return QString::fromWCharArray(static_cast<const wchar_t *>(value));
}
} // namespace

void TestProgramFile::initTestCase()
{
    m_file = LoadLibraryExW(program().toStdWString().c_str(), nullptr,
                            LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
    QVERIFY2(m_file != nullptr, qPrintable(program()));
}

void TestProgramFile::cleanupTestCase()
{
    FreeLibrary(m_file);
}

QByteArray TestProgramFile::resource(WORD kind) const
{
    const HRSRC place = FindResourceW(m_file, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(kind));
    if (place == nullptr) {
        return {};
    }
    const auto *bytes = static_cast<const char *>(LockResource(LoadResource(m_file, place)));
    return {bytes, static_cast<int>(SizeofResource(m_file, place))};
}

void TestProgramFile::opensNoConsole()
{
    QFile file(program());
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.read(4096);
    const auto *dos = reinterpret_cast<const IMAGE_DOS_HEADER *>(bytes.constData());
    QVERIFY(dos->e_lfanew > 0 && dos->e_lfanew < 2048);
    const auto *header =
        reinterpret_cast<const IMAGE_NT_HEADERS64 *>(bytes.constData() + dos->e_lfanew);
    QCOMPARE(int(header->OptionalHeader.Subsystem), IMAGE_SUBSYSTEM_WINDOWS_GUI);
    const int wanted = IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE | IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    QCOMPARE(header->OptionalHeader.DllCharacteristics & wanted, wanted);
}

void TestProgramFile::iconHasAllSizes_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
        QTest::addRow("%d pixels", size) << size;
    }
}

void TestProgramFile::iconHasAllSizes()
{
    QFETCH(int, size);
    // The group's header of six bytes, then fourteen for each picture; 0 stands for 256.
    const QByteArray group = resource(iconGroup);
    VERIFY_RELATION(group.size(), >, 6);
    bool found = false;
    for (int place = 6; place + 14 <= group.size(); place += 14) {
        const int width = static_cast<unsigned char>(group.at(place));
        const int height = static_cast<unsigned char>(group.at(place + 1));
        found = found || (width == size % 256 && height == size % 256);
    }
    QVERIFY(found);
}

void TestProgramFile::version()
{
    const std::wstring name = program().toStdWString();
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(name.c_str(), &unused);
    QVERIFY(size > 0);
    QByteArray version(static_cast<int>(size), '\0');
    QVERIFY(GetFileVersionInfoW(name.c_str(), 0, size, version.data()) != 0);
    QCOMPARE(entry(version, "FileDescription"), QStringLiteral("Emberwake Online Launcher"));
    QCOMPARE(entry(version, "ProductName"), QStringLiteral("Emberwake Online Launcher"));
    QCOMPARE(entry(version, "CompanyName"), QStringLiteral("Emberwake"));
    QCOMPARE(entry(version, "ProductVersion"), QStringLiteral("1.0.0"));
    QCOMPARE(entry(version, "FileVersion"), QStringLiteral("1.0.0"));

    void *value = nullptr;
    UINT length = 0;
    QVERIFY(VerQueryValueW(version.data(), L"\\", &value, &length) != 0);
    const auto *fixed = static_cast<const VS_FIXEDFILEINFO *>(value);
    QCOMPARE(fixed->dwFileVersionMS, DWORD(1U << 16U));
    QCOMPARE(fixed->dwFileVersionLS, DWORD(0));
}

void TestProgramFile::manifest()
{
    const QByteArray text = resource(manifestKind);
    QMap<QString, QString> texts;
    QString version;
    QString level;
    int systems = 0;
    QXmlStreamReader reader(text);
    while (!reader.atEnd()) {
        if (reader.readNext() != QXmlStreamReader::StartElement) {
            continue;
        }
        const QString name = reader.name().toString();
        if (name == QLatin1String("assemblyIdentity")) {
            version = reader.attributes().value(QStringLiteral("version")).toString();
        } else if (name == QLatin1String("requestedExecutionLevel")) {
            level = reader.attributes().value(QStringLiteral("level")).toString();
        } else if (name == QLatin1String("supportedOS")) {
            ++systems;
        } else if (name.startsWith(QLatin1String("dpi")) ||
                   name.startsWith(QLatin1String("long"))) {
            texts[name] = reader.readElementText();
        }
    }
    QVERIFY2(!reader.hasError(), qPrintable(reader.errorString()));
    QCOMPARE(version, QStringLiteral("1.0.0.0"));
    QCOMPARE(level, QStringLiteral("asInvoker"));
    QCOMPARE(systems, 4);
    QCOMPARE(texts.value(QStringLiteral("longPathAware")), QStringLiteral("true"));
    QCOMPARE(texts.value(QStringLiteral("dpiAware")), QStringLiteral("true/pm"));
    QCOMPARE(texts.value(QStringLiteral("dpiAwareness")),
             QStringLiteral("PerMonitorV2, PerMonitor"));
}

QTEST_GUILESS_MAIN(TestProgramFile)
#include "tst_programfile.moc"
