#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Lumen {

// A fast binary trace: fixed-size records kept in a ring, newest replacing
// oldest. Recording formats nothing and allocates nothing, so it may run on
// paths where a text trace would cost too much; a debugger or a test reads
// the ring afterwards.
class TraceRing {
 public:
  struct Record {
    const char* event = nullptr;  // a string literal naming the site
    std::int64_t arg0 = 0;
    std::int64_t arg1 = 0;
    // What the record is about, such as a port's name; null for nothing.
    const char* subject = nullptr;
  };

  // Throws std::invalid_argument for a zero capacity.
  explicit TraceRing(std::size_t capacity);
  TraceRing(const TraceRing&) = delete;
  TraceRing& operator=(const TraceRing&) = delete;

  std::size_t capacity() const { return records_.size(); }
  // Records held: the last min(recorded(), capacity()).
  std::size_t size() const;
  // Records made since construction or the last clear(), overwritten ones included.
  std::uint64_t recorded() const { return recorded_; }

  // `subject` is kept as a pointer: it must live as long as the ring, as a
  // literal or an interned port name does.
  void record(const char* event, std::int64_t arg0 = 0, std::int64_t arg1 = 0, const char* subject = nullptr);
  // The i-th held record, oldest first; i < size().
  const Record& at(std::size_t i) const;
  // The newest record; only when size() > 0.
  const Record& last() const { return at(size() - 1); }
  // Forgets every record.
  void clear() { recorded_ = 0; }

 private:
  std::vector<Record> records_;
  std::uint64_t recorded_ = 0;
};

// The process's fast trace.
TraceRing& fastTrace();

}  // namespace Lumen
