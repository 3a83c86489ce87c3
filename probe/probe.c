// probe/probe.c: arrayfold-probe.so, a module that tells which promises its host keeps
//
// A script asks for the report by functions. The checks run with the first call of one, because they need a context.

#include <arrayfold/host.h>
#include <stdio.h>
#include <string.h>

#include "calls.h"
#include "operations.h"
#include "promises.h"

enum { MOST_PROMISES = 100 };
static Outcome outcomes[MOST_PROMISES];
static int have_run;

static const char* plain(const char* sentence) {
  static char text[300];
  size_t length = 0;
  for (; *sentence && length < sizeof text - 1; ++sentence)
    if (*sentence != '`') text[length++] = *sentence;
  text[length] = '\0';
  return text;
}

static int has_other_layout(void) {
  for (int i = 0; i < promise_count(); ++i)
    if (promise_at(i)->layout == DECIDES_LAYOUT) return outcomes[i].verdict == BROKEN && *outcomes[i].operation == '\0';
  return 0;
}

static Outcome outcome_of(const Promise* promise) {
  const Outcome blocked = {.verdict = UNCHECKED, .finding = "records are laid out differently"};
  return promise->layout == OWN_LAYOUT && has_other_layout() ? blocked : run_isolated(promise->check);
}

static void run_once(HostContext ctx) {
  if (have_run) return;
  have_run = 1;
  use_context(ctx);
  for (int i = 0; i < promise_count(); ++i) outcomes[i] = outcome_of(promise_at(i));
}

static int count_of(Verdict verdict) {
  int count = 0;
  for (int i = 0; i < promise_count(); ++i) count += outcomes[i].verdict == verdict;
  return count;
}

// ---- The report

typedef struct Page {
  char text[65536];
  size_t length;
} Page;

static void add(Page* page, const char* text) {
  const size_t length = strlen(text), room = sizeof page->text - 1 - page->length;
  memcpy(page->text + page->length, text, length < room ? length : room);
  page->length += length < room ? length : room;
  page->text[page->length] = '\0';
}

static void add_all(Page* page, Verdict verdict, const char* title) {
  char line[1400];
  if (count_of(verdict) == 0) return;
  add(page, title);
  for (int i = 0; i < promise_count(); ++i) {
    if (outcomes[i].verdict != verdict) continue;
    snprintf(line, sizeof line, "\n%3d. %s\n     %s", i + 1, plain(promise_at(i)->sentence), outcomes[i].finding);
    add(page, line);
  }
}

static const char* report(void) {
  static Page page;
  page.length = 0;
  char line[200];
  snprintf(line, sizeof line, "%d promises: %d kept, %d broken, %d not checked", promise_count(), count_of(KEPT),
           count_of(BROKEN), count_of(UNCHECKED));
  add(&page, line);
  add_all(&page, BROKEN, "\nBroken:");
  add_all(&page, UNCHECKED, "\nNot checked:");
  return page.text;
}

// ---- The functions of scripts. Where the host cannot take the answer, it goes to the standard error.

static int is_safe(const char* operation, int exists) {
  for (int i = 0; i < promise_count(); ++i)
    if (strcmp(outcomes[i].operation, operation) == 0) return 0;
  return exists;
}
#define IS_SAFE(name) is_safe(#name, operations.name != NULL)

static int give_text(HostContext ctx, HostValue* result, const char* text) {
  if (IS_SAFE(HVM_SetStringEx))
    operations.HVM_SetStringEx(ctx, result, text, (int)strlen(text));
  else if (IS_SAFE(HVM_SetString))
    operations.HVM_SetString(ctx, result, text);
  else
    return fprintf(stderr, "%s\n", text), 0;
  return 1;
}

static int give_number(HostContext ctx, HostValue* result, int x) {
  if (!IS_SAFE(HVM_SetInt)) return fprintf(stderr, "%d\n", x), 0;
  operations.HVM_SetInt(ctx, result, x);
  return 1;
}

// The index of the promise that the first argument names, counted from 1; -1 if there is none.
static int index_in(HostValue* args, int nargs) {
  const int number = nargs >= 1 && IS_SAFE(HVM_AsInt) ? operations.HVM_AsInt(args) : 0;
  return number >= 1 && number <= promise_count() ? number - 1 : -1;
}

static int probe_summary(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)args, (void)nargs;
  run_once(ctx);
  return give_text(ctx, result, report());
}

static int probe_count(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)args, (void)nargs;
  run_once(ctx);
  return give_number(ctx, result, promise_count());
}

static int probe_broken(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)args, (void)nargs;
  run_once(ctx);
  return give_number(ctx, result, count_of(BROKEN));
}

static int probe_promise(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  run_once(ctx);
  const int i = index_in(args, nargs);
  return i >= 0 && give_text(ctx, result, plain(promise_at(i)->sentence));
}

static int probe_verdict(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  static const char* const words[] = {"kept", "broken: ", "not checked: "};
  run_once(ctx);
  const int i = index_in(args, nargs);
  if (i < 0) return 0;
  const Outcome* outcome = &outcomes[i];
  char text[1100];
  snprintf(text, sizeof text, "%s%s", words[outcome->verdict], outcome->finding);
  return give_text(ctx, result, text);
}

// ---- Calls as the module sees them: a function, and an object whose methods, operators and elements answer alike.
// An element that is written gives no answer, so the last one is kept.

static char last[1100];

static const char* answer(Outcome outcome) {
  snprintf(last, sizeof last, "%s%s", outcome.verdict == BROKEN ? "broken: " : "", outcome.finding);
  return last;
}

static int probe_call(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  run_once(ctx);
  return give_text(ctx, result, answer(described_function(args, nargs)));
}

static int probe_last(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)args, (void)nargs;
  run_once(ctx);
  return give_text(ctx, result, last);
}

static const char calls_name[] = "$probecalls";
static void* create_calls(void) { return last; }
static void destroy_calls(HostContext ctx, void* content) { (void)ctx, (void)content; }

static HostBool any_method(HostContext ctx, HostValue* self, const char* name, HostValue** args, int nargs,
                           HostValue* result, int flag) {
  (void)self, (void)flag;
  return give_text(ctx, result, answer(described_method(name, args, nargs))) != 0;
}

static HostBool any_operator(HostContext ctx, int opcode, HostValue* left, HostValue* right, HostValue* result) {
  const char* text = answer(described_operator(opcode, left, right, result));
  return opcode == HOST_OPCODE_WRITE_ELEMENT || give_text(ctx, result, text) != 0;
}

static int probe_object(HostContext ctx, HostValue* args, int nargs, HostValue* result) {
  (void)args, (void)nargs;
  run_once(ctx);
  if (!IS_SAFE(HVM_NewAny) || !IS_SAFE(HVM_SetTypeAny)) return 0;
  HostAny* any = operations.HVM_NewAny(ctx, calls_name, 0, 0);
  if (any == NULL) return 0;
  operations.HVM_SetTypeAny(ctx, result, any);
  return 1;
}

static const FunctionRow rows[] = {
    {"probe_summary", probe_summary}, {"probe_count", probe_count},     {"probe_broken", probe_broken},
    {"probe_promise", probe_promise}, {"probe_verdict", probe_verdict}, {"probe_call", probe_call},
    {"probe_last", probe_last},       {"probe_object", probe_object},
};

__attribute__((visibility("default"))) int PKG_Init(void* host, RegisterFunctions register_functions);

int PKG_Init(void* host, RegisterFunctions register_functions) {
  find_operations();
  register_functions(host, sizeof rows / sizeof *rows, rows);
  if (register_types()) register_type(calls_name, create_calls, destroy_calls, any_method, any_operator);
  return promise_count() <= MOST_PROMISES;
}
