#pragma once

#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/types.h>

/// Standard output or standard error, written without waiting for whoever reads it: what is not
/// taken now is kept, in its order, and goes ahead of the next text. Any thread may call.
class ConsoleStream {
 public:
  /// The descriptor itself is left as it is, since other processes share what it stands for.
  explicit ConsoleStream(int descriptor);

  /// Writes the text or keeps it. False where nobody reads any more; it is then lost.
  bool put(std::string_view text);
  /// The same for a text that is worth nothing later: unless it can be written now, it is left out.
  /// A text that was taken in part is finished before any other.
  bool offer(std::string_view text);
  /// For a signal handler. Of what cannot be written now, only the line ends are kept.
  void putFromHandler(std::string_view text);

  /// Writes what can be written now of what is kept; whether nothing is left of it.
  bool flush();
  /// To be polled for a reader that goes on.
  int descriptor() const { return descriptor_; }

 private:
  enum class Way { plain, socket, polled };

  /// How many bytes were taken; 0: none now; -1: the text is lost (errno).
  ssize_t take(std::string_view text) const;
  bool writeKept();

  int descriptor_;
  Way way_ = Way::plain;
  std::mutex mutex_;
  std::string kept_;                   ///< from begin_ on still to be written
  std::size_t begin_ = 0;              ///< of kept_
  std::atomic<bool> keeps_{false};     ///< something was kept at the last look
  std::atomic<unsigned> lineEnds_{0};  ///< from handlers, not yet written
};
