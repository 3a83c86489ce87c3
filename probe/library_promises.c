// probe/library_promises.c: finding the host's libraries, and what they have

#include "fixture.h"

#include <math.h>
#include <stdio.h>
#include <string.h>

static void libraries_are_found(void) {
  if (operations.kernel_error != NULL) broken("%s", operations.kernel_error);
  if (operations.interpreter_error != NULL) broken("%s", operations.interpreter_error);
}

static void operations_exist(void) {
  char missing[900] = "";
#define LIST(name)                                                     \
  if (operations.name == NULL) {                                       \
    strncat(missing, " " #name, sizeof missing - strlen(missing) - 1); \
  }
  HOST_OPERATIONS(LIST, LIST)
#undef LIST
  if (*missing) broken("the host lacks%s", missing);
}

static void version_is_there(void) {
  if (operations.interpreter_error != NULL) unchecked("%s", operations.interpreter_error);
  if (operations.lgamma == NULL || operations.erf == NULL)
    broken("libHVMInterp.so has no %s of version HVMINTERP_1", operations.erf == NULL ? "erf" : "lgamma");
  if (!operations.has_versions) broken("libHVMInterp.so has no version node at all");
}

static int is_near(double answer, double expected) {
  if (isnan(expected)) return isnan(answer);
  if (isinf(expected)) return answer == expected;
  return fabs(answer - expected) <= (expected == 0 ? 1e-15 : fabs(expected) * 1e-13);
}

static void expect_value(const char* name, double x, double answer, double expected) {
  if (!is_near(answer, expected)) broken("%s(%.17g) is %.17g, not %.17g", name, x, answer, expected);
}

static void functions_have_their_values(void) {
  static const double of_erf[][2] = {{0, 0},
                                     {0.5, 0.52049987781304654},
                                     {-1, -0.84270079294971487},
                                     {2, 0.99532226501895273},
                                     {INFINITY, 1},
                                     {-INFINITY, -1},
                                     {NAN, NAN},
                                     {1e-300, 1.1283791670955126e-300}};
  static const double of_lgamma[][2] = {{1, 0},
                                        {2, 0},
                                        {0.5, 0.57236494292470008},
                                        {10, 12.801827480081469},
                                        {-0.5, 1.2655121234846454},
                                        {0, INFINITY},
                                        {INFINITY, INFINITY},
                                        {NAN, NAN},
                                        {1e10, 220258509288.81146}};
  for (int i = 0; i < COUNT(of_erf); ++i) expect_value("erf", of_erf[i][0], HOST(erf)(of_erf[i][0]), of_erf[i][1]);
  for (int i = 0; i < COUNT(of_lgamma); ++i)
    expect_value("lgamma", of_lgamma[i][0], HOST(lgamma)(of_lgamma[i][0]), of_lgamma[i][1]);
}

// clang-format off
static const Promise promises[] = {
    {"`libHVMkrnl.so` and `libHVMInterp.so` are found by these names.", libraries_are_found, ANY_LAYOUT},
    {"The 44 operations exist, `HVM_FreeMatrix` and `HVM_DelStrm` among them, which a module has nothing to pass to.",
     operations_exist, ANY_LAYOUT},
    {"`lgamma` and `erf` have the version `HVMINTERP_1`.", version_is_there, ANY_LAYOUT},
    {"`lgamma` and `erf` have the values of the C library's functions.", functions_have_their_values, ANY_LAYOUT},
};
// clang-format on
const PromiseGroup library_promises = {promises, COUNT(promises)};
