// Helpers shared by all test programs.
//
//   EXPECT_ERROR(statement, "text")   the statement must report an error whose message is exactly
//                                     "text" (as passed to error(), without the "error: " prefix).
//   EXPECT_NO_ERROR(statement)        the statement must not report an error.
//   ak_test::ErrorsThrow guard;       for its lifetime, error() throws its message as a char*
//                                     instead of ending the process.
//   ak_test::Recorder rec;            for its lifetime, printed text, warnings and messages are kept
//                                     in rec.printed / rec.warnings / rec.messages instead of
//                                     reaching the console; with Recorder::kErrors, errors are
//                                     recorded in rec.errors and error() returns to its caller.
#pragma once
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "arklib.h"
#include "runtime/error_internal.h"

namespace ak_test {

// Sets error flag bit 4 and puts the default error handler in place (without marking a handler as
// set). Restores both flag words and the handler on exit, and drops an error report left pending.
class ErrorsThrow {
  public:
    ErrorsThrow()
        : error_flags_(ak_default_error_flags),
          warning_flags_(ak_default_warning_flags),
          handler_(ak_error_handler) {
        ak_default_error_flags |= 16;
        ak_error_handler = ak_internal::default_error_handler;
    }
    ~ErrorsThrow() {
        ak_default_error_flags = error_flags_;
        ak_default_warning_flags = warning_flags_;
        ak_error_handler = handler_;
        ak_lasterr_clear();
    }
    ErrorsThrow(const ErrorsThrow&) = delete;
    ErrorsThrow& operator=(const ErrorsThrow&) = delete;

  private:
    unsigned error_flags_, warning_flags_;
    ak_text_handler_t handler_;
};

// Replaces the output handlers with recording ones and puts the previous handlers back on exit.
// Recorders nest: the innermost one records.
class Recorder {
  public:
    enum What : unsigned { kPrint = 1, kWarnings = 2, kMessages = 4, kErrors = 8 };
    explicit Recorder(unsigned what = kPrint | kWarnings | kMessages) : outer_(active()) {
        active() = this;
        if (what & kPrint) swap(ak_print_handler, saved_print_, on_print);
        if (what & kWarnings) swap(ak_warning_handler, saved_warning_, on_warning);
        if (what & kMessages) swap(ak_message_handler, saved_message_, on_message);
        if (what & kMessages) swap(ak_logmessage_handler, saved_log_, on_message);
        if (what & kErrors) swap(ak_error_handler, saved_error_, on_error);
    }
    ~Recorder() {
        restore(ak_print_handler, saved_print_);
        restore(ak_warning_handler, saved_warning_);
        restore(ak_message_handler, saved_message_);
        restore(ak_logmessage_handler, saved_log_);
        restore(ak_error_handler, saved_error_);
        active() = outer_;
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    void clear() {
        printed.clear();
        warnings.clear();
        messages.clear();
        errors.clear();
    }

    std::string printed;  // everything given to the print handler, concatenated
    std::vector<std::string> warnings, messages, errors;

  private:
    static Recorder*& active() {
        static Recorder* current = nullptr;
        return current;
    }
    // Slots are assigned directly, so that recording does not count as a host setting a handler.
    static void swap(ak_text_handler_t& slot, ak_text_handler_t& saved, ak_text_handler_t f) {
        saved = slot;
        slot = f;
    }
    static void restore(ak_text_handler_t& slot, ak_text_handler_t saved) {
        if (saved) slot = saved;
    }
    static void on_print(const char* t) { active()->printed += t ? t : ""; }
    static void on_warning(const char* t) { active()->warnings.push_back(t ? t : ""); }
    static void on_message(const char* t) { active()->messages.push_back(t ? t : ""); }
    static void on_error(const char* t) { active()->errors.push_back(t ? t : ""); }

    Recorder* outer_;
    ak_text_handler_t saved_print_ = nullptr, saved_warning_ = nullptr, saved_message_ = nullptr,
                      saved_log_ = nullptr, saved_error_ = nullptr;
};

// ---- builders shared by the test programs ---------------------------------------------------------
// A 1 x n real row of the values given.
inline Mm row(std::initializer_list<double> values) {
    Mm m(0, 0, 0, 1, static_cast<int>(values.size()), ak_double);
    int k = 0;
    for (double v : values) m.addr()[k++] = v;
    return m;
}

// A 1 x n byte row (uint8) of the values given.
inline Mm bytes(std::initializer_list<int> values) {
    Mm m(0, 0, 0, 1, static_cast<int>(values.size()), ak_uchar);
    int k = 0;
    for (int v : values) static_cast<unsigned char*>(m.pr)[k++] = static_cast<unsigned char>(v);
    return m;
}

// A sparse 1 x n row whose stored entries are the (zero-based position, value) pairs given, in the
// order given.
inline Mm sparse_entries(int n, std::initializer_list<std::pair<int, double>> entries) {
    Mm m(0, 1, static_cast<int>(entries.size()), 1, n, ak_double);
    int k = 0;
    for (auto& e : entries) {
        m.index[k] = e.first;
        m.addr()[k++] = e.second;
    }
    return m;
}

}  // namespace ak_test

#define EXPECT_ERROR(statement, text)                                               \
    do {                                                                            \
        ::ak_test::ErrorsThrow ak_guard_;                                           \
        bool ak_thrown_ = false;                                                    \
        std::string ak_caught_;                                                     \
        try {                                                                       \
            statement;                                                              \
        } catch (char* ak_message_) {                                               \
            ak_thrown_ = true;                                                      \
            ak_caught_ = ak_message_;                                               \
        }                                                                           \
        if (!ak_thrown_) {                                                          \
            ADD_FAILURE() << "no error reported by: " #statement;                   \
        } else {                                                                    \
            EXPECT_EQ(std::string(text), ak_caught_) << "reported by: " #statement; \
        }                                                                           \
    } while (0)

#define EXPECT_NO_ERROR(statement)                                              \
    do {                                                                        \
        ::ak_test::ErrorsThrow ak_guard_;                                       \
        try {                                                                   \
            statement;                                                          \
        } catch (char* ak_message_) {                                           \
            ADD_FAILURE() << #statement " reported the error: " << ak_message_; \
        }                                                                       \
    } while (0)
