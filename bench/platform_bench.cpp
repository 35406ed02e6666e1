#include "common/errortexts.h"
#include "platform/drivemap.h"
#include "platform/jsonregistrystore.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

// A vault-like tree: 10 folders of 1,000 files each.
struct Tree {
    Tree()
    {
        for (int f = 0; f < 10; ++f) {
            const QString folder = dir.path() + QStringLiteral("/Folder%1").arg(f);
            QDir().mkpath(folder);
            for (int i = 0; i < 1000; ++i) {
                QFile file(folder + QStringLiteral("/Part%1.mcdprt").arg(i));
                file.open(QIODevice::WriteOnly);
            }
        }
        map.mount('V', dir.path());
    }
    QTemporaryDir dir;
    DriveMap map;
};

Tree &tree()
{
    static Tree t;
    return t;
}

void BM_ToNativeExactCase(benchmark::State &state)
{
    const DriveMap &map = tree().map;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.toNative(QStringLiteral("V:\\Folder7\\Part512.mcdprt")));
}
BENCHMARK(BM_ToNativeExactCase);

// Every component in the wrong case: each needs a directory listing.
void BM_ToNativeOtherCase(benchmark::State &state)
{
    const DriveMap &map = tree().map;
    for (auto _ : state)
        benchmark::DoNotOptimize(map.toNative(QStringLiteral("v:\\FOLDER7\\PART512.MCDPRT")));
}
BENCHMARK(BM_ToNativeOtherCase);

void BM_ToWindows(benchmark::State &state)
{
    const DriveMap &map = tree().map;
    const QString native = tree().dir.path() + QStringLiteral("/Folder7/Part512.mcdprt");
    for (auto _ : state)
        benchmark::DoNotOptimize(map.toWindows(native));
}
BENCHMARK(BM_ToWindows);

struct Registry500 {
    Registry500() : store(dir.path() + QStringLiteral("/registry.json"))
    {
        for (int v = 0; v < 50; ++v) {
            const QString key = QStringLiteral("Software\\Vendor\\Vaults\\Vault%1").arg(v);
            store.createKey(RegistryRoot::LocalMachine, RegistryView::View32, key);
            for (int i = 0; i < 10; ++i)
                store.writeValue(RegistryRoot::LocalMachine, RegistryView::View32, key, QStringLiteral("Value%1").arg(i),
                                 RegistryValue::fromDword(i));
        }
    }
    QTemporaryDir dir;
    JsonRegistryStore store;
};

Registry500 &registry()
{
    static Registry500 r;
    return r;
}

void BM_RegistryRead(benchmark::State &state)
{
    JsonRegistryStore &store = registry().store;
    for (auto _ : state)
        benchmark::DoNotOptimize(store.readValue(RegistryRoot::LocalMachine, RegistryView::View32,
                                                 QStringLiteral("Software\\Vendor\\Vaults\\Vault25"),
                                                 QStringLiteral("DateFmt")));
}
BENCHMARK(BM_RegistryRead);

// A write re-reads the file under the lock and rewrites it (500 values).
void BM_RegistryWrite(benchmark::State &state)
{
    JsonRegistryStore &store = registry().store;
    std::uint32_t n = 0;
    for (auto _ : state)
        store.writeValue(RegistryRoot::LocalMachine, RegistryView::View32,
                         QStringLiteral("Software\\Vendor\\Vaults\\Vault25"), QStringLiteral("DateFmt"),
                         RegistryValue::fromDword(++n));
}
BENCHMARK(BM_RegistryWrite)->Unit(benchmark::kMicrosecond);

// A code no table knows: the whole name table is searched.
void BM_ErrorInformationUnknownCode(benchmark::State &state)
{
    setHostStringServiceFactory({});
    QString text;
    QString name;
    for (auto _ : state) {
        errorInformation(static_cast<HRESULT>(0x8004FFFFu), &text, &name);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_ErrorInformationUnknownCode);

} // namespace
