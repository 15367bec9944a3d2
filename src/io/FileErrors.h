#pragma once

#include <QString>

// What a user needs to hear when a file fails them: which file, and why.
namespace FileErrors {

// Why the file cannot be opened for reading: "no such file", "a folder, not
// a file", or the system's reason ("Permission denied").
QString whyUnreadable(const QString &path);

// "PATH: reason", the form the details of a message take.
QString describe(const QString &path, const QString &reason);

} // namespace FileErrors
