#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "platform/memoryfilesystem.h"
#include "run/filelistxml.h"
#include "run/taskrunrecord.h"
#include "run/testing/runfakes.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QXmlStreamReader>

#include <benchmark/benchmark.h>

namespace {

constexpr int RecordCount = 10000;

// Outputs of a conversion run: ten outputs per selected file.
std::vector<FileRecord> conversionOutputs(int count)
{
    std::vector<FileRecord> records;
    records.reserve(static_cast<size_t>(count));
    std::shared_ptr<FileRecord> source;
    for (int i = 0; i < count; ++i) {
        if (i % 10 == 0) {
            source = std::make_shared<FileRecord>();
            source->path = QStringLiteral("V:\\Vault\\Projects\\P%1\\Assembly %1.mcdasm").arg(i / 10);
            source->docId = 1000 + i / 10;
            source->projId = 10 + i / 1000;
            source->version = 1 + i % 7;
        }
        FileRecord output;
        output.source = source;
        output.path = QStringLiteral("V:\\Vault\\Output\\P%1\\Assembly %1 - Config %2.pdf").arg(i / 10).arg(i % 10);
        output.conf = QStringLiteral("Config %1").arg(i % 10);
        records.push_back(std::move(output));
    }
    return records;
}

void BM_FileListXmlWriteRead(benchmark::State &state)
{
    const auto records = conversionOutputs(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        QString xml;
        FileListXml::write(records, 1, xml);
        const auto back = FileListXml::read(xml);
        benchmark::DoNotOptimize(back.data());
        if (back.size() != records.size())
            state.SkipWithError("records lost in the round trip");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FileListXmlWriteRead)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

void BM_FileListXmlWrite(benchmark::State &state)
{
    const auto records = conversionOutputs(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        QString xml;
        FileListXml::write(records, 1, xml);
        benchmark::DoNotOptimize(xml.data());
    }
}
BENCHMARK(BM_FileListXmlWrite)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

void BM_FileListXmlRead(benchmark::State &state)
{
    QString xml;
    FileListXml::write(conversionOutputs(static_cast<int>(state.range(0))), 1, xml);
    for (auto _ : state)
        benchmark::DoNotOptimize(FileListXml::read(xml));
}
BENCHMARK(BM_FileListXmlRead)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

// A launch's selection list: selected files only, four values per record.
void BM_SelectionListXmlWriteRead(benchmark::State &state)
{
    std::vector<FileRecord> selected;
    for (const FileRecord &output : conversionOutputs(static_cast<int>(state.range(0))))
        selected.push_back(*output.source);
    for (auto _ : state) {
        QString xml;
        FileListXml::write(selected, 1, xml);
        benchmark::DoNotOptimize(FileListXml::read(xml).data());
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SelectionListXmlWriteRead)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

// What Qt itself needs for the text of 10,000 output records, without any
// of the list code: the DOM parse (building and freeing the tree) and the
// bare tokenising underneath it. These bound what the read can reach.
void BM_QtDomParseOnly(benchmark::State &state)
{
    QString xml;
    FileListXml::write(conversionOutputs(static_cast<int>(state.range(0))), 1, xml);
    for (auto _ : state) {
        QDomDocument doc;
        if (!doc.setContent(xml))
            state.SkipWithError("the list text did not parse");
    }
}
BENCHMARK(BM_QtDomParseOnly)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

void BM_QtXmlTokenizeOnly(benchmark::State &state)
{
    QString xml;
    FileListXml::write(conversionOutputs(static_cast<int>(state.range(0))), 1, xml);
    for (auto _ : state) {
        QXmlStreamReader reader(xml);
        int tokens = 0;
        while (!reader.atEnd() && reader.readNext() != QXmlStreamReader::Invalid)
            ++tokens;
        benchmark::DoNotOptimize(tokens);
    }
}
BENCHMARK(BM_QtXmlTokenizeOnly)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

// Registers count outputs (every second one saved twice, in another letter
// case) against a vault that knows none of them, so each output is a new
// file whose local path is checked and that is announced three times.
void registerOutputs(benchmark::State &state, bool realFileSystem)
{
    const int count = static_cast<int>(state.range(0));
    QTemporaryDir dir;
    MemoryFileSystem memory;
    FileSystem *previous = realFileSystem ? nullptr : FileSystem::setInstance(&memory);
    DriveMap drives;
    drives.mount(QLatin1Char('V'), dir.path());
    ScopedDriveMap driveGuard(drives);
    FileSystem::instance().mkpath(dir.path() + QStringLiteral("/Vault/Output"));

    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths.append(QStringLiteral("V:\\Vault\\Output\\Part %1.pdf").arg(i));

    auto vault = std::make_shared<RunTestVault>();
    auto source = std::make_shared<FileRecord>();
    std::int64_t notifications = 0;
    for (auto _ : state) {
        TaskRunRecord record;
        record.setVaultClientNotifier([&](std::int32_t, const QString &) { ++notifications; });
        record.start(vault, 1, false);
        record.setCurrentSource(source);
        for (int i = 0; i < count; ++i) {
            record.registerOutput(paths.at(i), QString(), false);
            if (i % 2 == 0)
                record.registerOutput(paths.at(i).toUpper(), QString(), false);
        }
        if (record.records().size() != static_cast<size_t>(count))
            state.SkipWithError("duplicates were not merged");
    }
    state.counters["notifications"] = benchmark::Counter(static_cast<double>(notifications),
                                                         benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(state.iterations() * count);
    if (!realFileSystem)
        FileSystem::setInstance(previous);
}

void BM_RegisterOutputsMemoryFs(benchmark::State &state)
{
    registerOutputs(state, false);
}
BENCHMARK(BM_RegisterOutputsMemoryFs)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

void BM_RegisterOutputsRealFs(benchmark::State &state)
{
    registerOutputs(state, true);
}
BENCHMARK(BM_RegisterOutputsRealFs)->Arg(RecordCount)->Unit(benchmark::kMillisecond);

// The de-duplication alone must stay linear: doubling the outputs should
// roughly double the time.
void BM_RegisterOutputsScaling(benchmark::State &state)
{
    registerOutputs(state, false);
}
BENCHMARK(BM_RegisterOutputsScaling)->Arg(5000)->Arg(10000)->Arg(20000)->Unit(benchmark::kMillisecond);

} // namespace
