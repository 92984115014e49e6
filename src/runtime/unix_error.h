#pragma once
// Contract. Why something failed, as a value that an owner can keep, test and word.

#include "runtime/uni_string.h"

// A failure with a text. Empty means that nothing failed.
class ZnError {
 public:
  ZnError() = default;
  explicit ZnError(ZnUniString text) : text_(std::move(text)) {}

  const ZnUniString& Text() const { return text_; }
  bool IsEmpty() const { return text_.IsEmpty(); }

 private:
  ZnUniString text_;
};

// A system call that failed. The texts are built when they are asked for, so that recording a failure costs little.
class ZnUnixError {
 public:
  ZnUnixError() = default;
  // `code` is an errno value; `call` the name of the call, a string that lives for ever (a literal); `arguments` its
  // arguments as people should see them.
  ZnUnixError(int code, const char* call, ZnUniString arguments = ZnUniString())
      : code_(code), call_(call), arguments_(std::move(arguments)) {}

  int Code() const { return code_; }
  const char* Call() const { return call_; }
  const ZnUniString& Arguments() const { return arguments_; }
  bool IsEmpty() const { return code_ == 0; }

  // The host's words for the code: "Permission denied".
  ZnUniString Reason() const;
  // Call, arguments and reason: "bind(5, 127.0.0.1:139): Permission denied". Empty when nothing failed.
  ZnUniString Text() const;

 private:
  int code_ = 0;
  const char* call_ = "";
  ZnUniString arguments_;
};
