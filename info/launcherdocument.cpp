// The launcher document: fetching it, its offline copy, and applying what it says to the window.

#include "base/console.h"
#include "base/labeltext.h"
#include "base/pathsafety.h"
#include "fetch/filedownloader.h"
#include "info/launcherdocumentreader.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QFile>
#include <QFileInfo>
#include <QMessageBox>
#include <QTextStream>
#include <QUrl>

namespace
{
QString readOfflineCopy(const QString &fileName)
{
    QFile file(fileName);
    if (!QFileInfo(fileName).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return {};
    }
    return QTextStream(&file).readAll();
}

// A failure is ignored: the copy is a convenience.
void writeOfflineCopy(const QString &fileName, const QString &text)
{
    QFile file(fileName);
    // kept: the file is not truncated, so a shorter document leaves the tail of a longer one
    // behind it. The copy is never read back in normal operation.
    if (isFileOrFree(fileName) && file.open(QIODevice::ReadWrite)) {
        QTextStream(&file) << text;
    }
}

void fillNewsItem(News &item, const NewsEntry &entry)
{
    item.title = entry.title;
    item.description = entry.description;
    item.imageUrl = entry.imageUrl;
    item.newsUrl = entry.clickUrl;
    showDocumentText(*item.labelTitle, item.title);
    showDocumentText(*item.labelSubtitle, item.description);
}
} // namespace

// Applies the document to the window while it is read.
class testform::DocumentApplier : public LauncherDocumentHandler
{
public:
    explicit DocumentApplier(testform &form)
        : m_form(form)
    {
    }

    void elementStarted(const QString &name) override { Console::out(name + QLatin1Char('\n')); }

    void launcherVersion(int version) override
    {
        // One page is enough, however often the document says so.
        if (version <= LAUNCHER_VERSION || m_outdated) {
            return;
        }
        m_outdated = true;
        QMessageBox::warning(
            nullptr, QStringLiteral("Warning"),
            QStringLiteral("You current launcher is outdated! Please download a new one!"),
            QMessageBox::Ok);
        QDesktopServices::openUrl(QUrl(WEBSITE_URL));
        // Takes effect when control returns to the event loop: the rest of the document is still
        // read and applied.
        QApplication::quit();
    }

    void client(const ClientInfo &info) override
    {
        m_form.clientInfos[info.server][info.client] = info;
    }

    // Slides and tiles beyond those of the form are counted by the reader and ignored here: there
    // is no label that could show them.
    void homeNews(int index, const NewsEntry &entry) override
    {
        if (index < m_form.numSlides) {
            fillNewsItem(m_form.homeNews[index], entry);
        }
    }

    void news(int index, const NewsEntry &entry) override
    {
        if (index < m_form.numNews) {
            fillNewsItem(m_form.news[index], entry);
        }
    }

    void brokenClient() override
    {
        Console::error(QStringLiteral("ERROR: CLIENT: BROKEN XML FILE\n"));
    }

    void brokenNews() override
    {
        // kept: slides and tiles share this line; operators' log filters know it.
        Console::error(QStringLiteral("ERROR: HOMENEWS: BROKEN XML FILE\n"));
    }

private:
    testform &m_form;
    bool m_outdated = false;
};

void testform::downloadInfo()
{
    infoDownloader = new FileDownloader(QUrl(infoUrl), this);
    connect(infoDownloader, SIGNAL(downloaded()), this, SLOT(loadInfo()));
}

void testform::loadInfo(bool isBuffer)
{
    QString text;
    if (isBuffer) {
        text = readOfflineCopy(DIR_OFFLINE);
    } else {
        text = decodeLauncherDocument(infoDownloader->downloadedData());
        writeOfflineCopy(DIR_OFFLINE, text);
    }
    // Without a document the window stays at "Connecting to server...".
    if (text.isEmpty()) {
        return;
    }

    DocumentApplier applier(*this);
    readLauncherDocument(text, settings.auth, applier);

    loadNews(isBuffer);
    createServerButtons();
    ui->labelConnecting->hide();
    applyRememberedSelection();
}

// Nothing calls it: the copy is written at every start but not read back. It is the way in for
// starting from the copy.
void testform::loadBuffer()
{
    loadInfo(true);
}

QString testform::trimString(QString q)
{
    return withoutLeadingQuestionMark(q);
}
