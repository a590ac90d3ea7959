// SPDX-License-Identifier: GPL-3.0-or-later
// Runs a fuzz target on the files of the folders that it is given, in the order of their names, for
// builds without the fuzzer. A finding ends the program, and the last name printed is its file's.

#include "FuzzInput.h"

#include <QDirIterator>
#include <QFile>
#include <QStringList>

int main(int argc, char *argv[])
{
    QStringList paths;
    for (int i = 1; i < argc; ++i) {
        QDirIterator files(QString::fromLocal8Bit(argv[i]), QDir::Files);
        while (files.hasNext())
            paths.append(files.next());
    }
    paths.sort();
    for (const QString &path : paths) {
        std::cout << qPrintable(path) << std::endl;
        QFile file(path);
        require(file.open(QIODevice::ReadOnly));
        const QByteArray input = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(input.constData()),
                               static_cast<std::size_t>(input.size()));
    }
    std::cout << paths.size() << " inputs replayed" << std::endl;
    return paths.isEmpty() ? 1 : 0;
}
