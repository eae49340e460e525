#pragma once

class ScanPipeline;
class Statistics;

/// Adds what the scans of this run did. Times are milliseconds from the start of the last scan; one
/// that it did not come to is left out.
void addScanStatistics(Statistics& statistics, const ScanPipeline& pipeline);
