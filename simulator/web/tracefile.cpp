#include "tracefile.h"

#include <QCryptographicHash>
#include <QFile>

// Outside of all namespaces, as Qt wants it.
static void usePageResource()
{
    Q_INIT_RESOURCE(page);
}

namespace
{
// In an order in which none needs a later one.
const char *const scripts[] = {"format.js", "events.js",  "layout.js", "picture.js",
                               "chart.js",  "details.js", "link.js",   "controls.js",
                               "prompt.js", "story.js",   "main.js"};

// The text of a block that "<!-- name: ... -->" marks in the page is put in its place.
void replaceBlock(QByteArray &page, const QByteArray &name, const QByteArray &text)
{
    const QByteArray begin = "<!-- " + name + " -->";
    const QByteArray end = "<!-- end of " + name + " -->";
    const auto start = page.indexOf(begin);
    page.replace(start, page.indexOf(end) + end.size() - start, text);
}

QByteArray hashOf(const QByteArray &text)
{
    return "'sha256-" + QCryptographicHash::hash(text, QCryptographicHash::Sha256).toBase64() + "'";
}

// JSON in which no tag can begin or end, whatever a widget is called.
QByteArray events(const EventLog &log)
{
    QByteArray list = "[\n";
    for (qint64 number = log.first(); number <= log.last(); ++number) {
        QByteArray event = log.at(number);
        list += event.replace('<', "\\u003c") + (number < log.last() ? ",\n" : "\n");
    }
    return list + ']';
}
} // namespace

QByteArray PageFiles::read(const QString &name)
{
    usePageResource();
    QFile file(QStringLiteral(":/page/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray TraceFile::script()
{
    QByteArray all;
    for (const char *const name : scripts) {
        const QList<QByteArray> lines = PageFiles::read(QString::fromLatin1(name)).split('\n');
        for (const QByteArray &line : lines) {
            if (!line.startsWith("import ")) {
                all += (line.startsWith("export ") ? line.mid(7) : line) + '\n';
            }
        }
    }
    return all;
}

QByteArray TraceFile::html(const EventLog &log)
{
    const QByteArray style = PageFiles::read(QStringLiteral("style.css"));
    const QByteArray code = script();
    const QByteArray policy = "default-src 'none'; script-src " + hashOf(code) + "; style-src " +
                              hashOf(style) + "; img-src data:; base-uri 'none'; form-action 'none'";
    QByteArray page = PageFiles::read(QStringLiteral("index.html"));
    replaceBlock(page, "files",
                 "<meta http-equiv=\"Content-Security-Policy\" content=\"" + policy + "\">\n<style>" + style +
                     "</style>");
    replaceBlock(page, "script",
                 "<script type=\"application/json\" id=\"trace\">" + events(log) +
                     "</script>\n<script type=\"module\">" + code + "</script>");
    return page;
}
