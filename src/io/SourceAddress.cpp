#include "SourceAddress.h"

#include <QRegularExpression>
#include <QUrl>

#include <cmath>

QString SourceAddress::schemeOf(const QString &text)
{
    static const QRegularExpression scheme(QStringLiteral("^([A-Za-z][A-Za-z0-9+.-]+):"));
    const QRegularExpressionMatch match = scheme.match(text);
    return match.hasMatch() ? match.captured(1).toLower() : QString();
}

bool SourceAddress::parse(const QString &text, SourceAddress *out, QString *error)
{
    out->text = text;
    out->scheme = schemeOf(text);
    if (out->scheme.isEmpty())
        return true;
    const QUrl url(text.trimmed(), QUrl::StrictMode);
    if (!url.isValid()) {
        // QUrl's own text repeats the address and its parts: the first sentence is the reason.
        *error = QStringLiteral("malformed address: %1").arg(url.errorString().section(QLatin1Char(';'), 0, 0));
        return false;
    }
    out->url = url;
    out->host = url.host();
    out->port = url.port();
    out->query = QUrlQuery(url);
    return true;
}

bool SourceAddress::requireHostAndPort(const QString &form, bool hostOptional, int minPort, QString *error) const
{
    const bool onlyHostAndPort = url.userInfo().isEmpty() && (url.path().isEmpty() || url.path() == QLatin1String("/"))
        && !url.hasFragment();
    if ((host.isEmpty() && !hostOptional) || port < minPort || !onlyHostAndPort) {
        *error = QStringLiteral("malformed address: expected %1 with a port from %2 to 65535").arg(form).arg(minPort);
        return false;
    }
    return true;
}

bool SourceAddress::requireOptionsOnly(const QString &form, QString *error) const
{
    if (!host.isEmpty() || port >= 0 || !url.userInfo().isEmpty() || !url.path().isEmpty() || url.hasFragment()) {
        *error = QStringLiteral("malformed address: expected %1").arg(form);
        return false;
    }
    return true;
}

bool SourceAddress::allowOnlyOptions(const QStringList &keys, const QString &form, QString *error) const
{
    const auto items = query.queryItems();
    for (const auto &item : items) {
        if (!keys.contains(item.first)) {
            *error = QStringLiteral("malformed address: unknown option \"%1\" (expected %2)").arg(item.first, form);
            return false;
        }
    }
    return true;
}

bool SourceAddress::numberOption(const QString &key, double min, double max, double fallback, double *value,
                                 QString *error) const
{
    *value = fallback;
    if (!query.hasQueryItem(key))
        return true;
    bool ok = false;
    const double number = query.queryItemValue(key).toDouble(&ok);
    if (!ok || !std::isfinite(number) || number < min || number > max) {
        *error = QStringLiteral("malformed address: %1 must be a number from %2 to %3")
                     .arg(key, QString::number(min, 'f', 0), QString::number(max, 'f', 0));
        return false;
    }
    *value = number;
    return true;
}

bool SourceAddress::hostPortOption(const QString &key, QString *host, int *port, QString *error) const
{
    host->clear();
    *port = -1;
    if (!query.hasQueryItem(key))
        return true;
    // "HOST:PORT", or "[::1]:PORT" for an IPv6 address, read as a URL would be.
    const QUrl url(QLatin1String("x://") + query.queryItemValue(key, QUrl::FullyDecoded), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty() || url.port() < 1 || !url.path().isEmpty()) {
        *error = QStringLiteral("malformed address: %1 must be HOST:PORT with a port from 1 to 65535").arg(key);
        return false;
    }
    *host = url.host();
    *port = url.port();
    return true;
}

QString SourceAddress::withoutPassword(const QString &text)
{
    if (schemeOf(text).isEmpty())
        return text;
    QUrl url(text);
    if (url.password().isEmpty())
        return text;
    url.setPassword(QString());
    return url.toString();
}
