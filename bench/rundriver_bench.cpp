#include "host/testing/faketask.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"
#include "run/cadconnection.h"
#include "run/taskrundriver.h"
#include "run/taskrunrecord.h"
#include "run/vaulthandover.h"
#include "vault/embeddedvault.h"
#include "vault/vaultstore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

// The add-in's own share of a conversion run: the run driver, the output
// registration, the output list, the batch add, the references, the card
// mapping and the check-in, with a CAD application whose "macro" only writes
// one small export per file (no process, no macro engine).

namespace {

class ExportingCad final : public CadConnection
{
public:
    explicit ExportingCad(QString nativeOut) : m_out(std::move(nativeOut)) {}
    void Init(std::shared_ptr<TaskRunRecord> record, std::int32_t, std::shared_ptr<IDoxTaskInstance>,
              std::int32_t) override
    {
        m_record = std::move(record);
    }
    HRESULT Start() override { return S_OK; }
    HRESULT RetryStart(HRESULT) override { return S_OK; }
    void RunMacro(const QString &) override
    {
        const QString &source = m_record->currentSource()->path;
        const QString name = source.mid(source.lastIndexOf('\\') + 1).section('.', 0, 0) + QStringLiteral(".pdf");
        m_record->registerOutput(QStringLiteral("V:\\Out\\") + name, QStringLiteral("Sheet1"), false);
        QFile file(m_out + '/' + name);
        if (file.open(QIODevice::WriteOnly))
            file.write("%PDF trivial export\n");
    }
    void AfterFile() override {}
    HRESULT Close(bool, HRESULT) override { return S_OK; }
    QString lastError() const override { return {}; }

private:
    QString m_out;
    std::shared_ptr<TaskRunRecord> m_record;
};

struct RunFixture {
    explicit RunFixture(int files)
    {
        store = VaultStore::create(dir.path() + "/vault", QStringLiteral("Bench"));
        drives.mount('V', dir.path() + "/vault");
        QDir().mkpath(dir.path() + "/vault/Out");
        store->defineCardVariable(QStringLiteral("Revision"));
        store->defineCardVariable(QStringLiteral("Description"));
        const QString part = dir.path() + "/part.mcdprt";
        QFile source(part);
        if (source.open(QIODevice::WriteOnly))
            source.write("part\n");
        source.close();
        for (int i = 0; i < files; ++i) {
            const QString name = QStringLiteral("P%1.mcdprt").arg(i, 4, 10, QLatin1Char('0'));
            const VaultFileRow row = store->addFile(part, QStringLiteral("Parts"), name, {});
            data.push_back({row.id, row.folderId, QStringLiteral("V:\\Parts\\") + name, {}, DoxObject_File, 1});
        }
        instance->set(QStringLiteral("__type"), Variant::fromI4(1));
        instance->set(QStringLiteral("__script"), Variant::fromBStr(QStringLiteral("' <Filepath> <Configuration>")));
        instance->set(QStringLiteral("RefToSource"), Variant::fromBool(true));
        instance->set(QStringLiteral("FileCardData"),
                      Variant::fromBStr(QStringLiteral("Revision;4;\nDescription;8;Converted\n")));
    }

    QTemporaryDir dir;
    std::shared_ptr<VaultStore> store;
    DriveMap drives;
    ScopedDriveMap scopedDrives{drives};
    DoxCmdDataArray data;
    std::shared_ptr<FakeTaskInstance> instance = std::make_shared<FakeTaskInstance>();
};

void ConversionRun(benchmark::State &state)
{
    const int files = static_cast<int>(state.range(0));
    double handOverSeconds = 0;
    double runSeconds = 0;
    for (auto _ : state) {
        state.PauseTiming();
        RunFixture fixture(files);
        auto vault = std::make_shared<EmbeddedVault>(fixture.store);
        auto record = std::make_shared<TaskRunRecord>();
        auto cad = std::make_shared<ExportingCad>(fixture.dir.path() + "/vault/Out");
        TaskRunDriver driver(record, cad, {}, [](const QString &) { return 0; });
        QElapsedTimer handOver;
        DoxCmd cmd;
        QElapsedTimer run;
        state.ResumeTiming();

        run.start();
        const HRESULT hr = driver.Run(vault, fixture.instance, cmd, fixture.data);
        const HRESULT finished = driver.Finish(*fixture.instance, hr);
        runSeconds += run.nsecsElapsed() / 1e9;

        state.PauseTiming();
        if (hr != S_OK || finished != S_OK || fixture.instance->status != TaskStatus_FinishedOk)
            state.SkipWithError("the run did not finish successfully");
        if (fixture.store->fileByPath(QStringLiteral("Out/P0000.pdf"))->lock != VaultLock::None)
            state.SkipWithError("the outputs were not checked in");
        // The hand-over alone, on the same vault again: every output is new.
        for (const auto &row : fixture.store->filesIn(fixture.store->folderByPath(QStringLiteral("Out"))->id))
            fixture.store->deleteFile(row.id);
        for (const DoxCmdData &entry : fixture.data) {
            const QString name = entry.string1.mid(entry.string1.lastIndexOf('\\') + 1).section('.', 0, 0);
            QFile file(fixture.dir.path() + "/vault/Out/" + name + ".pdf");
            if (file.open(QIODevice::WriteOnly))
                file.write("%PDF trivial export\n");
        }
        for (FileRecord &output : record->records()) {
            output.checkedOut = false;
            output.docId = 0;
        }
        VaultHandOver again(vault, *fixture.instance, *record, {});
        handOver.start();
        if (again.addOutputs() != S_OK)
            state.SkipWithError("the hand-over failed");
        handOverSeconds += handOver.nsecsElapsed() / 1e9;
        state.ResumeTiming();
    }
    state.counters["files"] = files;
    const double runs = static_cast<double>(state.iterations());
    state.counters["run_ms_per_file"] = runSeconds * 1000.0 / runs / files;
    state.counters["handover_ms"] =
        benchmark::Counter(handOverSeconds * 1000.0, benchmark::Counter::kAvgIterations);
    state.SetItemsProcessed(state.iterations() * files);
}

} // namespace

BENCHMARK(ConversionRun)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->Iterations(3);
