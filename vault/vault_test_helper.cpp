// A second process for the multi-process tests of the vault:
//   vault_test_helper add VAULTDIR FOLDER COUNT [--hold]
// writes COUNT files into FOLDER of the vault's local view and adds them in
// one transaction. With --hold it stops half-way inside the transaction,
// prints "holding" and waits for its standard input to close (or for a kill).
#include "host/hosterror.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QFile>

#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char **argv)
{
    if (argc < 5 || std::string(argv[1]) != "add") {
        std::fprintf(stderr, "usage: vault_test_helper add VAULTDIR FOLDER COUNT [--hold]\n");
        return 2;
    }
    const QString dir = QString::fromLocal8Bit(argv[2]);
    const QString folder = QString::fromLocal8Bit(argv[3]);
    const int count = std::atoi(argv[4]);
    const bool hold = argc > 5 && std::string(argv[5]) == "--hold";
    try {
        auto store = VaultStore::open(dir);
        QDir().mkpath(store->paths().toNative(folder));
        for (int i = 0; i < count; ++i) {
            QFile file(store->paths().toNative(VaultPaths::join(folder, QStringLiteral("f%1.txt").arg(i))));
            if (!file.open(QIODevice::WriteOnly))
                return 1;
            file.write(QStringLiteral("%1 %2").arg(folder).arg(i).toUtf8());
        }
        Transaction transaction(store->db());
        for (int i = 0; i < count; ++i) {
            const QString name = QStringLiteral("f%1.txt").arg(i);
            store->addFile(store->paths().toNative(VaultPaths::join(folder, name)), folder, name, {});
            if (hold && i == count / 2) {
                std::printf("holding\n");
                std::fflush(stdout);
                std::string line;
                while (std::getline(std::cin, line)) {
                }
            }
        }
        transaction.commit();
        std::printf("done %d\n", count);
        return 0;
    } catch (const HostError &e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 1;
    }
}
