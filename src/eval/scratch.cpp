#include "eval/scratch.hpp"

#include <memory>

namespace korvex::eval {

namespace {

struct Pool {
  std::vector<std::unique_ptr<Scratch>> levels;
  std::size_t depth = 0;
};

Pool& pool() {
  thread_local Pool p;
  return p;
}

}  // namespace

ScratchLease::ScratchLease() {
  Pool& p = pool();
  if (p.depth == p.levels.size()) p.levels.push_back(std::make_unique<Scratch>());
  scratch_ = p.levels[p.depth++].get();
}

ScratchLease::~ScratchLease() {
  scratch_->clear();
  --pool().depth;
}

}  // namespace korvex::eval
