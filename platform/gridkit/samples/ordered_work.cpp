#include "gridkit/samples/ordered_work.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace gridkit {

namespace {

class OrderedWork {
 public:
  using Part = std::function<void(std::int64_t, std::size_t)>;

  OrderedWork(std::int64_t parts, std::size_t slots, const Part& work)
      : parts_(parts), slots_(static_cast<std::int64_t>(slots)), work_(work), slot_states_(slots) {}

  // What a thread does until nothing is left.
  void run() {
    std::unique_lock lock(mutex_);
    while (true) {
      changed_.wait(lock, [&] { return is_over() || next_ < taken_ + slots_; });
      if (is_over()) return;
      const std::int64_t part = next_++;
      Slot& slot = slot_of(part);
      lock.unlock();
      std::exception_ptr failure;
      try {
        work_(part, number_of(part));
      } catch (...) {
        failure = std::current_exception();
      }
      lock.lock();
      slot.is_done = true;
      slot.failure = failure;
      changed_.notify_all();
    }
  }

  void take_all(const Part& take) {
    for (std::int64_t part = 0; part < parts_; ++part) {
      std::unique_lock lock(mutex_);
      Slot& slot = slot_of(part);
      changed_.wait(lock, [&] { return slot.is_done; });
      if (slot.failure != nullptr) std::rethrow_exception(slot.failure);
      lock.unlock();
      take(part, number_of(part));
      lock.lock();
      slot.is_done = false;
      ++taken_;
      changed_.notify_all();
    }
  }

  // No part is begun any more.
  void stop() {
    const std::lock_guard lock(mutex_);
    stopped_ = true;
    changed_.notify_all();
  }

 private:
  struct Slot {
    bool is_done = false;
    std::exception_ptr failure;
  };

  bool is_over() const { return stopped_ || next_ == parts_; }
  std::size_t number_of(std::int64_t part) const { return static_cast<std::size_t>(part % slots_); }
  Slot& slot_of(std::int64_t part) { return slot_states_[number_of(part)]; }

  std::int64_t parts_;
  std::int64_t slots_;
  const Part& work_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Slot> slot_states_;
  std::int64_t next_ = 0;   // part to be begun
  std::int64_t taken_ = 0;  // parts that were taken
  bool stopped_ = false;
};

// Threads at work; stopped and joined at the end, whatever it is.
class Workers {
 public:
  Workers(OrderedWork& work, std::size_t count) : work_(work) {
    threads_.reserve(count);
    try {
      while (threads_.size() < count) threads_.emplace_back([this] { work_.run(); });
    } catch (const std::system_error&) {
      // Those that there are will do.
    }
  }
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;
  ~Workers() { work_.stop(); }

  bool any() const { return !threads_.empty(); }

 private:
  OrderedWork& work_;
  std::vector<std::jthread> threads_;  // joined after the stop
};

}  // namespace

void work_in_order(std::int64_t parts, std::size_t workers,
                   const std::function<void(std::int64_t, std::size_t)>& work,
                   const std::function<void(std::int64_t, std::size_t)>& take) {
  if (workers > 1 && parts > 1) {
    OrderedWork ordered(parts, slots_for(workers), work);
    const Workers running(ordered, workers);
    if (running.any()) return ordered.take_all(take);
  }
  for (std::int64_t part = 0; part < parts; ++part) {
    work(part, 0);
    take(part, 0);
  }
}

std::size_t usual_workers() {
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, 16);
}

}  // namespace gridkit
