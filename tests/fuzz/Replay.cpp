// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

// Replays the stored inputs of a fuzzer: every file in the directory given as argument. Needs no
// instrumentation.

#include <QDir>
#include <QFile>

#include <cstdio>

#include "fuzz/Fuzzer.h"

int main(int, char** arguments)
{
    const QDir corpus(QString::fromLocal8Bit(arguments[1]));
    const QStringList names = corpus.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QFile file(corpus.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return 1;
        std::printf("%s\n", qPrintable(name));
        std::fflush(stdout); // after a crash, the last line names the input
        const QByteArray bytes = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size()));
    }
    std::printf("%d inputs replayed\n", names.size());
    return names.isEmpty() ? 1 : 0;
}
