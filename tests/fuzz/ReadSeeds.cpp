// SPDX-License-Identifier: MIT
#include <QDirIterator>
#include <QFile>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, std::size_t size);

/// Reads every file in the folders given once.
int main(int argc, char **argv)
{
    int read = 0;
    for (int index = 1; index < argc; ++index) {
        QDirIterator files(QFile::decodeName(argv[index]), QDir::Files);
        for (; files.hasNext(); ++read) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                qFatal("Cannot read %s", qPrintable(file.fileName()));
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char *>(bytes.data()),
                                   bytes.size());
        }
    }
    return read > 0 ? 0 : 1;
}
