#include "app/ScanStatistics.h"

#include "app/ScanPipeline.h"
#include "app/Statistics.h"

void addScanStatistics(Statistics& statistics, const ScanPipeline& pipeline) {
    const ScanFigures& scan = pipeline.figures();
    const BuildThumbServices& thumbnails = pipeline.buildThumb();
    const auto count = [&](const char* name, const std::atomic<quint64>& value) {
        statistics.set(QString::fromLatin1(name), static_cast<double>(value.load()));
    };
    const auto time = [&](const char* name, const std::atomic<double>& value) {
        if (value >= 0) statistics.set(QString::fromLatin1(name), value);
    };
    count("items", scan.items);
    count("folders", scan.folders);
    count("rows_inserted", scan.rowsInserted);
    count("rows_removed", scan.rowsRemoved);
    count("publications", scan.publications);
    count("thumbnails_built", thumbnails.built);
    count("thumbnails_failed", thumbnails.failed);
    time("first_publication_ms", scan.firstPublication);
    time("catalogue_pass_ms", scan.cataloguePass);
    time("scan_finished_ms", scan.scanFinished);
    time("thumbnails_done_ms", scan.thumbnailsDone);
    time("first_shown_ms", scan.firstShown);
    time("last_shown_ms", scan.lastShown);
    statistics.set(
        QStringLiteral("scan_begin_ms"), Statistics::sinceProcessStart() - scan.sinceBegin());
}
