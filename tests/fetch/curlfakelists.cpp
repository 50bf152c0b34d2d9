#include "curlfakelists.h"

#include <QMap>
#include <QMutex>
#include <QMutexLocker>

#include <cstdarg>

extern "C" {
curl_slist *__real_curl_slist_append(curl_slist *list, const char *line);
void __real_curl_slist_free_all(curl_slist *list);
CURLFORMcode __real_curl_formadd(curl_httppost **first, curl_httppost **last, ...);
void __real_curl_formfree(curl_httppost *form);

curl_slist *__wrap_curl_slist_append(curl_slist *list, const char *line);
void __wrap_curl_slist_free_all(curl_slist *list);
CURLFORMcode __wrap_curl_formadd(curl_httppost **first, curl_httppost **last, ...);
void __wrap_curl_formfree(curl_httppost *form);
}

namespace
{

struct Lists {
    QMutex mutex;
    QByteArray failingLine;
    QMap<QByteArray, CURLFORMcode> failingParts;
    int openHeaderLists = 0;
    QMap<const void *, QList<CurlFake::FormPart>> forms;
};

Lists &lists()
{
    static Lists instance;
    return instance;
}

} // namespace

curl_slist *__wrap_curl_slist_append(curl_slist *list, const char *line)
{
    const QMutexLocker locker(&lists().mutex);
    if (!lists().failingLine.isNull() && lists().failingLine == line) {
        return nullptr;
    }
    lists().openHeaderLists += list == nullptr ? 1 : 0;
    return __real_curl_slist_append(list, line);
}

void __wrap_curl_slist_free_all(curl_slist *list)
{
    const QMutexLocker locker(&lists().mutex);
    lists().openHeaderLists -= list == nullptr ? 0 : 1;
    __real_curl_slist_free_all(list);
}

/// Only in the form in which it is called: a name, and a value from one source.
CURLFORMcode __wrap_curl_formadd(curl_httppost **first, curl_httppost **last, ...)
{
    va_list arguments;
    va_start(arguments, last);
    const auto nameOption = static_cast<CURLformoption>(va_arg(arguments, int));
    const char *const name = va_arg(arguments, const char *);
    const auto source = static_cast<CURLformoption>(va_arg(arguments, int));
    const char *const value = va_arg(arguments, const char *);
    const auto end = static_cast<CURLformoption>(va_arg(arguments, int));
    va_end(arguments);
    if (nameOption != CURLFORM_COPYNAME || end != CURLFORM_END) {
        qFatal("curl_formadd was called in a way that the fake does not know");
    }
    const QMutexLocker locker(&lists().mutex);
    if (lists().failingParts.contains(name)) {
        return lists().failingParts.value(name);
    }
    const CURLFORMcode code = __real_curl_formadd(first, last, nameOption, name, source, value, CURLFORM_END);
    lists().forms[*first].append({name, source, value});
    return code;
}

void __wrap_curl_formfree(curl_httppost *form)
{
    const QMutexLocker locker(&lists().mutex);
    lists().forms.remove(form);
    __real_curl_formfree(form);
}

namespace CurlFake
{

QList<FormPart> partsOf(const void *form)
{
    const QMutexLocker locker(&lists().mutex);
    return lists().forms.value(form);
}

void resetLists()
{
    const QMutexLocker locker(&lists().mutex);
    lists().failingLine.clear();
    lists().failingParts.clear();
}

void failFormPart(const QByteArray &name, CURLFORMcode code)
{
    const QMutexLocker locker(&lists().mutex);
    lists().failingParts.insert(name, code);
}

void failHeader(const QByteArray &line)
{
    const QMutexLocker locker(&lists().mutex);
    lists().failingLine = line;
}

int openHeaderLists()
{
    const QMutexLocker locker(&lists().mutex);
    return lists().openHeaderLists;
}

int openForms()
{
    const QMutexLocker locker(&lists().mutex);
    return static_cast<int>(lists().forms.size());
}

} // namespace CurlFake
