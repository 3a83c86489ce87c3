// cli/line_editor.cpp: lines typed at a terminal

#include "cli/line_editor.hpp"

#include <fcntl.h>
#include <fmt/format.h>
#include <histedit.h>
#include <langinfo.h>
#include <locale.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <new>

#include "cli/streams.hpp"
#include "cli/style.hpp"
#include "cli/terminal.hpp"
#include "script/syntax/unicode.hpp"

namespace hvm {
namespace {

constexpr int history_length = 1000;
constexpr std::size_t most_shown_matches = 200;
constexpr std::size_t least_width = 10;  // of a window in which lines are edited

/// Makes the line editor read UTF-8, also when the user's locale has only ASCII. Numbers keep their point.
void use_unicode() {
  const bool has_locale = setlocale(LC_CTYPE, "") != nullptr;
  if (!has_locale || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) setlocale(LC_CTYPE, "C.UTF-8");
}

std::size_t width_of(std::string_view text) {
  std::size_t width = 0;
  while (!text.empty()) width += display_width(take_character(text));
  return width;
}

/// Words in columns as wide as the widest, from top to bottom.
std::string in_columns(const std::vector<std::string>& words, std::size_t width) {
  std::size_t widest = 0;
  for (const std::string& word : words) widest = std::max(widest, width_of(word));
  const std::size_t columns = std::max<std::size_t>(1, width / (widest + 2));
  const std::size_t rows = (words.size() + columns - 1) / columns;
  std::string text;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t i = row; i < words.size(); i += rows) {
      text += words[i];
      if (i + rows < words.size()) text.append(widest + 2 - width_of(words[i]), ' ');
    }
    text += '\n';
  }
  return text;
}

/// The bytes that all words begin with, in whole characters.
std::size_t common_length(const std::vector<std::string>& words) {
  const std::string& first = words.front();
  std::size_t length = first.size();
  for (const std::string& word : words)
    length = std::min<std::size_t>(
        length, std::mismatch(first.begin(), first.begin() + std::min(length, word.size()), word.begin()).first -
                    first.begin());
  while (length > 0 && !is_character_boundary(first, length)) --length;
  return length;
}

/// Signals after which the terminal needs the editor. The handlers of the system's editor serve the first one while a
/// line is typed, and put these back.
volatile sig_atomic_t is_resized = 0;
volatile sig_atomic_t is_continued = 0;

/// Handles a signal as long as it lives.
class Handling {
 public:
  Handling(int signal, void (*handler)(int)) : signal_(signal) {
    struct sigaction action = {};
    action.sa_handler = handler;  // without SA_RESTART: reading ends, and looks
    sigaction(signal, &action, &before_);
  }
  ~Handling() { sigaction(signal_, &before_, nullptr); }
  Handling(const Handling&) = delete;
  Handling& operator=(const Handling&) = delete;

 private:
  int signal_;
  struct sigaction before_ = {};
};

/// Characters of UTF-8 that come byte by byte.
class ByteReader {
 public:
  enum class Found { nothing, character, no_text };

  void add(char byte) { bytes_[count_++] = byte; }
  /// Takes the first character. What is no text becomes U+FFFD: a byte that begins no character, and a control
  /// character beyond ASCII.
  Found take(wchar_t& character) {
    if (count_ == 0) return Found::nothing;
    std::mbstate_t state = {};
    std::size_t length = std::mbrtowc(&character, bytes_, count_, &state);
    if (length == static_cast<std::size_t>(-2)) return Found::nothing;
    const bool is_wrong = length == static_cast<std::size_t>(-1);
    if (is_wrong || length == 0) length = 1;  // NUL has no length
    count_ -= length;
    std::copy(bytes_ + length, bytes_ + length + count_, bytes_);
    // The editor has no key for control characters beyond ASCII.
    const bool is_text = !is_wrong && (character < 0x80 || !is_control(static_cast<char32_t>(character)));
    if (!is_text) character = replacement;
    return is_text ? Found::character : Found::no_text;
  }

 private:
  static constexpr wchar_t replacement = 0xFFFD;

  char bytes_[MB_LEN_MAX] = {};
  std::size_t count_ = 0;
};

}  // namespace

/// The line editor of the system, with the functions of two keys.
class LineEditor::Editor {
 public:
  explicit Editor(Completer completer) : completer_(std::move(completer)) {
    use_unicode();
    history_ = history_init();
    line_ = history_ ? el_init("hvm", stdin, stdout, stderr) : nullptr;
    if (!line_) {
      if (history_) history_end(history_);
      throw std::bad_alloc();
    }
    set_up();
  }
  ~Editor() {
    el_end(line_);
    history_end(history_);
  }
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  TypedLine read(const std::string& prompt) {
    prompt_ = prompt;
    is_dropped_ = false;
    int count = 0;
    // The system's editor ends the process in a window of a few columns. There the terminal edits the lines.
    el_wset(line_, EL_EDITMODE, terminal_width() >= least_width ? 1 : 0);
    const Marks marks(marks_pastes_);
    const Handling resizing(SIGWINCH, [](int) { is_resized = 1; });
    const Handling continuing(SIGCONT, [](int) { is_continued = 1; });
    has_replacements_ = false;
    errno = 0;
    const char* typed = el_gets(line_, &count);
    if (is_dropped_ || (!typed && errno == EINTR)) return {TypedLine::End::dropped};
    if (!typed || count <= 0) return {};
    std::string text(typed, static_cast<std::size_t>(count));
    if (text.back() == '\n') text.pop_back();
    return {TypedLine::End::entered, std::move(text), has_replacements_};
  }

  void remember(const std::string& entry) {
    HistEvent event;
    history(history_, &event, H_ENTER, entry.c_str());
  }

 private:
  /// While it lives the terminal marks the begin and the end of pasted text.
  class Marks {
   public:
    explicit Marks(bool are_wanted) : are_wanted_(are_wanted) { send("\x1b[?2004h"); }
    ~Marks() {
      const int error = errno;
      send("\x1b[?2004l");
      errno = error;
    }
    Marks(const Marks&) = delete;
    Marks& operator=(const Marks&) = delete;

   private:
    void send(std::string_view code) const {
      if (!are_wanted_) return;
      [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, code.data(), code.size());
    }

    bool are_wanted_;
  };

  void set_up() {
    HistEvent event;
    history(history_, &event, H_SETSIZE, history_length);
    history(history_, &event, H_SETUNIQUE, 1);
    el_set(line_, EL_CLIENTDATA, this);
    el_set(line_, EL_HIST, history, history_);
    el_set(line_, EL_PROMPT, &Editor::shown_prompt);
    el_wset(line_, EL_EDITOR, L"emacs");
    el_wset(line_, EL_SIGNAL, 1);
    el_wset(line_, EL_GETCFN, &Editor::next_character);
    using Action = unsigned char (*)(EditLine*, wint_t);
    const struct {
      const wchar_t* name;
      const wchar_t* purpose;
      Action action;
    } actions[] = {{L"hvm-drop", L"drop the input", &Editor::drop_line},
                   {L"hvm-complete", L"complete a word", &Editor::complete_word},
                   {L"hvm-stop", L"stop hvm until it is continued", &Editor::stop},
                   {L"hvm-paste-begins", L"take tabs as they are", &Editor::begin_paste},
                   {L"hvm-paste-ends", L"complete at tabs again", &Editor::end_paste}};
    for (const auto& each : actions) el_wset(line_, EL_ADDFN, each.name, each.purpose, each.action);
    // While a line is edited the terminal makes no signals of keys.
    el_wset(line_, EL_SETTY, L"-d", L"-isig", nullptr);
    const struct {
      const wchar_t* keys;
      const wchar_t* action;
    } bindings[] = {{L"^C", L"hvm-drop"},
                    {L"^Z", L"hvm-stop"},
                    {L"^I", L"hvm-complete"},
                    {L"\\e[200~", L"hvm-paste-begins"},
                    {L"\\e[201~", L"hvm-paste-ends"},
                    {L"^R", L"em-inc-search-prev"},
                    {L"\\e[3~", L"ed-delete-next-char"}};
    for (const auto& each : bindings) el_wset(line_, EL_BIND, each.keys, each.action, nullptr);
  }

  static Editor& of(EditLine* line) {
    void* self = nullptr;
    el_get(line, EL_CLIENTDATA, &self);
    return *static_cast<Editor*>(self);
  }

  static char* shown_prompt(EditLine* line) { return of(line).prompt_.data(); }

  /// Gives the next character that is typed: 1; 0 at the end of the input, -1 with an error in `errno`. The system's
  /// own reading leaves out bytes that are not UTF-8 without a word.
  static int next_character(EditLine* line, wchar_t* character) {
    Editor& editor = of(line);
    while (true) {
      const ByteReader::Found found = editor.bytes_.take(*character);
      if (found == ByteReader::Found::no_text) editor.has_replacements_ = true;
      if (found != ByteReader::Found::nothing) return 1;
      char byte = 0;
      const ssize_t count = await_input() ? ::read(STDIN_FILENO, &byte, 1) : -1;
      if (count == 1)
        editor.bytes_.add(byte);
      else if (count == 0 || !editor.goes_on())
        return static_cast<int>(count);
    }
  }

  /// Waits until there is something to read; false with an error in `errno`. The signals that `goes_on` serves come
  /// only while it waits, so that none comes unseen just before.
  static bool await_input() {
    sigset_t served, before;
    sigemptyset(&served);
    sigaddset(&served, SIGWINCH);
    sigaddset(&served, SIGCONT);
    sigprocmask(SIG_BLOCK, &served, &before);
    const bool has_signal = is_resized || is_continued;
    pollfd waiting{STDIN_FILENO, POLLIN, 0};
    const bool is_there = !has_signal && ppoll(&waiting, 1, nullptr, &before) > 0;
    sigprocmask(SIG_SETMASK, &before, nullptr);
    if (has_signal) errno = EINTR;
    return is_there;
  }

  /// Whether reading can go on after the error in `errno`.
  bool goes_on() {
    if (errno == EAGAIN) return fcntl(STDIN_FILENO, F_SETFL, fcntl(STDIN_FILENO, F_GETFL) & ~O_NONBLOCK) == 0;
    if (errno != EINTR || (!is_resized && !is_continued)) return false;
    const bool resized = is_resized, continued = is_continued;
    is_resized = is_continued = 0;
    if (resized) el_resize(line_);
    if (continued) {
      edit_again();
      el_wset(line_, EL_REFRESH);
    }
    return true;
  }

  static unsigned char drop_line(EditLine* line, wint_t) {
    of(line).is_dropped_ = true;
    of(line).is_pasting_ = false;
    const LineInfoW* info = el_wline(line);
    el_cursor(line, static_cast<int>(info->lastchar - info->cursor));
    return CC_NEWLINE;
  }

  static unsigned char begin_paste(EditLine* line, wint_t) {
    of(line).is_pasting_ = true;
    return CC_NORM;
  }

  static unsigned char end_paste(EditLine* line, wint_t) {
    of(line).is_pasting_ = false;
    return CC_NORM;
  }

  static unsigned char stop(EditLine* line, wint_t) {
    el_wset(line, EL_PREP_TERM, 0);
    raise(SIGTSTP);
    of(line).edit_again();
    return CC_REDISPLAY;
  }

  /// The shell may have left the terminal in its own mode.
  void edit_again() {
    el_wset(line_, EL_PREP_TERM, 0);
    el_wset(line_, EL_PREP_TERM, 1);
  }

  static unsigned char complete_word(EditLine* line, wint_t) {
    try {
      return of(line).complete();
    } catch (const std::exception&) {
      return CC_ERROR;
    }
  }

  unsigned char complete() {
    if (is_pasting_) return insert("\t");
    const LineInfo* info = el_line(line_);
    const std::string before(info->buffer, info->cursor);
    // A tab before the first word indents, also in pasted text.
    if (before.find_first_not_of(" \t", before.rfind('\n') + 1) == std::string::npos) return insert("  ");
    const Completion completion = completer_(before);
    if (completion.matches.empty()) {
      if (completion.notice.empty()) return CC_ERROR;
      put(fmt::format("\n{}\n", completion.notice));
      finish_output();
      return CC_REDISPLAY;
    }
    const std::string typed = before.substr(completion.begin);
    const std::size_t common = common_length(completion.matches);
    if (completion.matches.size() == 1) {
      const std::string rest = completion.matches.front().substr(typed.size()) + completion.shown_after;
      return rest.empty() ? CC_NORM : insert(rest);
    }
    if (common > typed.size()) return insert(completion.matches.front().substr(typed.size(), common - typed.size()));
    show(completion.matches);
    return CC_REDISPLAY;
  }

  unsigned char insert(const std::string& text) const {
    return el_insertstr(line_, text.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
  }

  static void show(const std::vector<std::string>& matches) {
    const bool are_too_many = matches.size() > most_shown_matches;
    put("\n" + (are_too_many ? std::to_string(matches.size()) + " words match; type more letters\n"
                             : in_columns(matches, terminal_width())));
    finish_output();
  }

  Completer completer_;
  History* history_ = nullptr;
  EditLine* line_ = nullptr;
  std::string prompt_;
  bool is_dropped_ = false;
  bool is_pasting_ = false;
  ByteReader bytes_;
  bool has_replacements_ = false;  // in the line
  bool marks_pastes_ = is_capable_terminal(STDOUT_FILENO);
};

LineEditor::LineEditor(Completer completer) : editor_(std::make_unique<Editor>(std::move(completer))) {}
LineEditor::~LineEditor() = default;
TypedLine LineEditor::read(const std::string& prompt) { return editor_->read(prompt); }
void LineEditor::remember(const std::string& entry) { editor_->remember(entry); }

}  // namespace hvm
