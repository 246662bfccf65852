// A month's batch on a database server, shared by every process that runs
// it: the database is the coordinator. The record query's rows are listed
// once as claims (table korvex_claims: the run, each row's key, whether it
// is done); each process takes the next few open claims that no other
// holds (FOR UPDATE SKIP LOCKED), reads and locks those rows, computes
// them and commits their writes together with their claims, until no
// claim is left. A process that dies loses only its open group, whose
// claims the server releases with its transaction. When every claim of a
// run is done, the next batch of the same query starts a new run.
#pragma once

#include <atomic>
#include <optional>
#include <string>

#include "korvex/batch.hpp"

namespace korvex {

/// openBatchDatabase for a server's connection string. With `reuse`, the
/// workers read in one snapshot, exported by a session held open for the
/// batch's length, and share what they read.
std::optional<BatchDatabase> openServerBatch(const std::string& connection,
                                             const std::string& recordQuery, bool forWriting,
                                             const std::atomic<bool>* stop, std::string& error,
                                             bool reuse);

}  // namespace korvex
