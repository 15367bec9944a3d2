#pragma once

#include <QByteArray>
#include <QString>

// Whole-file helpers for tests that write inputs and compare outputs byte for byte.
QByteArray readFile(const QString &path);
bool writeFile(const QString &path, const QByteArray &bytes);
