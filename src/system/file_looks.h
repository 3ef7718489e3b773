#pragma once

// Remembers what a frame has read from the disk. While nothing else happens, asking again costs less than a new frame.
// Main thread.

#include <functional>
#include <string>
#include <utility>
#include <vector>

class FileLooks {
  public:
    using Question = std::function<std::string()>;

    void forget() { asked_.clear(); } // call it when a frame begins

    // Returns the answer to `question`, and remembers both. The question must read its answer from the disk only.
    std::string ask(Question question);

    // Asks all questions again, until one has another answer.
    [[nodiscard]] bool answersChanged() const;

  private:
    std::vector<std::pair<Question, std::string>> asked_;
};
