#pragma once

#include <QString>

#include <functional>
#include <memory>

class FMDatabase;

/// The five connections on the two catalogue files, one for each thread or queue that uses them.
class CatalogueConnections {
public:
    /// Opens them in their fixed order; the first on each file makes what is missing in it. A file
    /// that can't be used is told on standard error, in one line, and left as it is: its
    /// connections then answer nothing. Only a damaged file of thumbnails is moved aside for a new
    /// one, and one of another catalogue is removed.
    ///
    /// `prepare` is called with each connection before its first use.
    using Prepare = std::function<void(FMDatabase& connection)>;
    explicit CatalogueConnections(const Prepare& prepare = {});
    ~CatalogueConnections();

    /// Closes them in their fixed order. No queue may be running any more.
    void close();

    FMDatabase& mainFileDb() { return *_mainFileDb; }
    FMDatabase& mainThumbDb() { return *_mainThumbDb; }
    FMDatabase& scanFileDb() { return *_scanFileDb; }
    FMDatabase& preloadThumbDb() { return *_preloadThumbDb; }
    FMDatabase& buildThumbDb() { return *_buildThumbDb; }

private:
    std::unique_ptr<FMDatabase> _mainFileDb;
    std::unique_ptr<FMDatabase> _mainThumbDb;
    std::unique_ptr<FMDatabase> _scanFileDb;
    std::unique_ptr<FMDatabase> _preloadThumbDb;
    std::unique_ptr<FMDatabase> _buildThumbDb;
};
