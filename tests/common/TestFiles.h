#pragma once

#include <QByteArray>
#include <QString>

// Whole-file helpers for tests that write inputs and compare outputs byte for byte.
QByteArray readFile(const QString &path);
// Creates the missing folders above path, as a project on disk has them.
bool writeFile(const QString &path, const QByteArray &bytes);
