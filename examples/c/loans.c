// A complete program in C: an application with data of its own lets PredSelect rank its columns,
// build a classifier, predict, and predict again with the model from its file.
//
// Data go in and come out as Arrow C streams. The first half makes one by hand and prints one; a
// program that uses an Arrow library leaves both to it.

#include <predselect.h>
#include <predselect/host/data/ArrowCDataInterface.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// ---- Data of the application, as a stream -------------------------------------------------------

// Loans of a small bank: who paid back? Incomes in thousands; one is not known.
enum { kLoans = 16, kFields = 4, kUnknown = 8 };

static const double kAge[kLoans] = {34, 51, 27, 45, 23, 38, 29, 60, 41, 33, 26, 48, 55, 31, 44, 36};
static const double kIncome[kLoans] = {41, 62, 18, 55, 21, 30, 24, 48,
                                       0,  35, 19, 27, 58, 22, 39, 33};
static const unsigned char kIncomeKnown[kLoans / 8] = {0xFF, 0xFF ^ 1u << (kUnknown - 8)};
static const char* const kHome[kLoans] = {"owned",  "owned",  "rented", "owned", "rented", "rented",
                                          "rented", "owned",  "rented", "owned", "rented", "owned",
                                          "owned",  "rented", "owned",  "rented"};
static const char* const kPaidBack[kLoans] = {"yes", "yes", "no",  "yes", "no",  "yes",
                                              "no",  "yes", "no",  "yes", "yes", "no",
                                              "yes", "no",  "yes", "yes"};
static const char* const kNames[kFields] = {"age", "income", "home", "paid_back"};
static const char* const kFormats[kFields] = {"g", "g", "u", "u"};  // double, double, text, text

// Texts are kept end to end, with the place where each begins.
typedef struct {
  int32_t offsets[kLoans + 1];
  char bytes[kLoans * 8];
} texts;

static texts home;
static texts paid_back;

static void pack(texts* packed, const char* const* values) {
  for (int i = 0; i < kLoans; ++i) {
    const size_t length = strlen(values[i]);
    memcpy(packed->bytes + packed->offsets[i], values[i], length);
    packed->offsets[i + 1] = packed->offsets[i] + (int32_t)length;
  }
}

// A schema or a batch owns its fields; the cells themselves are the application's and stay.
typedef struct {
  struct ArrowSchema fields[kFields];
  struct ArrowSchema* pointers[kFields];
} schema_fields;

typedef struct {
  struct ArrowArray fields[kFields];
  struct ArrowArray* pointers[kFields];
  const void* buffers[kFields][3];
  const void* none;
} batch_fields;

static void release_field_schema(struct ArrowSchema* schema) { schema->release = NULL; }
static void release_field(struct ArrowArray* array) { array->release = NULL; }

// Fields that somebody moved out are released by him; there is nothing to do for the others.
static void release_schema(struct ArrowSchema* schema) {
  free(schema->private_data);
  schema->release = NULL;
}
static void release_batch(struct ArrowArray* batch) {
  free(batch->private_data);
  batch->release = NULL;
}

static int get_schema(struct ArrowArrayStream* stream, struct ArrowSchema* out) {
  (void)stream;
  schema_fields* own = calloc(1, sizeof *own);
  if (own == NULL) return 12;  // ENOMEM
  for (int i = 0; i < kFields; ++i) {
    own->fields[i] = (struct ArrowSchema){.format = kFormats[i],
                                          .name = kNames[i],
                                          .flags = ARROW_FLAG_NULLABLE,
                                          .release = release_field_schema};
    own->pointers[i] = &own->fields[i];
  }
  *out = (struct ArrowSchema){.format = "+s",
                              .n_children = kFields,
                              .children = own->pointers,
                              .release = release_schema,
                              .private_data = own};
  return 0;
}

// All loans in one batch, then the end. The stream's private data say which it is.
static int get_next(struct ArrowArrayStream* stream, struct ArrowArray* out) {
  *out = (struct ArrowArray){.release = NULL};
  int* given = stream->private_data;
  if (*given) return 0;
  batch_fields* own = calloc(1, sizeof *own);
  if (own == NULL) return 12;
  const void* buffers[kFields][3] = {{NULL, kAge, NULL},
                                     {kIncomeKnown, kIncome, NULL},
                                     {NULL, home.offsets, home.bytes},
                                     {NULL, paid_back.offsets, paid_back.bytes}};
  memcpy(own->buffers, buffers, sizeof buffers);
  for (int i = 0; i < kFields; ++i) {
    own->fields[i] = (struct ArrowArray){.length = kLoans,
                                         .null_count = buffers[i][0] == NULL ? 0 : 1,
                                         .n_buffers = *kFormats[i] == 'u' ? 3 : 2,
                                         .buffers = own->buffers[i],
                                         .release = release_field};
    own->pointers[i] = &own->fields[i];
  }
  *out = (struct ArrowArray){.length = kLoans,
                             .n_buffers = 1,
                             .buffers = &own->none,
                             .n_children = kFields,
                             .children = own->pointers,
                             .release = release_batch,
                             .private_data = own};
  *given = 1;
  return 0;
}

static const char* get_last_error(struct ArrowArrayStream* stream) {
  (void)stream;
  return NULL;
}
static void release_stream(struct ArrowArrayStream* stream) { stream->release = NULL; }

static struct ArrowArrayStream loans(int* given) {
  *given = 0;
  return (struct ArrowArrayStream){get_schema, get_next, get_last_error, release_stream, given};
}

// ---- A stream, printed --------------------------------------------------------------------------

static void print_cell(const struct ArrowSchema* field, const struct ArrowArray* cells, int64_t i) {
  const unsigned char* valid = cells->buffers[0];
  const int64_t at = i + cells->offset;
  if (valid != NULL && (valid[at / 8] >> at % 8 & 1) == 0) {
    printf("%-12s", "-");
  } else if (*field->format == 'g') {
    printf("%-12.4g", ((const double*)cells->buffers[1])[at]);
  } else {
    const int32_t* offsets = cells->buffers[1];
    const char* bytes = cells->buffers[2];
    printf("%-12.*s", (int)(offsets[at + 1] - offsets[at]), bytes + offsets[at]);
  }
}

// Prints up to `most` records a batch, and releases everything.
static void print_stream(struct ArrowArrayStream* stream, int64_t most) {
  struct ArrowSchema schema;
  struct ArrowArray batch;
  if (stream->get_schema(stream, &schema) != 0) exit(1);
  for (int64_t f = 0; f < schema.n_children; ++f) {
    printf("%s%s", f > 0 ? " | " : "  ", schema.children[f]->name);
  }
  printf("\n");
  while (stream->get_next(stream, &batch) == 0 && batch.release != NULL) {
    for (int64_t i = 0; i < batch.length && i < most; ++i) {
      printf("  ");
      for (int64_t f = 0; f < batch.n_children; ++f) {
        print_cell(schema.children[f], batch.children[f], i);
      }
      printf("\n");
    }
    batch.release(&batch);
  }
  schema.release(&schema);
  stream->release(stream);
}

// ---- What the application asks of PredSelect ----------------------------------------------------

static predselect_session* session;

// Ends the program where something that must work does not.
static void check(predselect_status status, const char* what) {
  if (status == PREDSELECT_OK) return;
  fprintf(stderr, "%s: status %d: %s\n", what, (int)status, predselect_session_error(session));
  exit(1);
}

static void show_progress(void* user_data, const char* text) {
  fprintf((FILE*)user_data, "%s\n", text);
}

static predselect_table* open_loans(void) {
  int given;
  struct ArrowArrayStream stream = loans(&given);
  predselect_table* table = NULL;
  const predselect_table_options options = {.struct_size = sizeof options, .name = "loans"};
  check(predselect_table_open(session, &stream, &options, &table), "the table");
  return table;
}

// Prints the tables of a kind.
static void print_tables(const predselect_result* result, const char* subtype) {
  size_t count = 0;
  check(predselect_result_table_count(session, result, &count), "the number of tables");
  for (size_t i = 0; i < count; ++i) {
    predselect_table_info info = {.struct_size = sizeof info};
    check(predselect_result_table_info(session, result, i, &info), "what a table is");
    if (strcmp(info.subtype, subtype) != 0) continue;
    struct ArrowArrayStream stream;
    check(predselect_result_table(session, result, i, &stream), "a table");
    printf("%s of %s:\n", info.title, info.command);
    print_stream(&stream, 100);
  }
}

static void print_new_columns(const predselect_result* result, const char* title) {
  struct ArrowArrayStream stream;
  check(predselect_result_new_columns(session, result, &stream), "the new columns");
  printf("%s:\n", title);
  print_stream(&stream, 4);
}

static void rank_and_learn(const char* state_path) {
  static const char kCommands[] =
      "SELECTPRED paid_back BY home WITH age income\n"
      "  /CRITERIA RANKING=PEARSONCHISQ PCUTOFF=0.05 SHOWUNSELECTED=3 /PRINT "
      "SUMMARY(PEARSONCHISQ)\n"
      "  /MACROVAR FACTORS=f COVARIATES=c.\n"
      "NAIVEBAYES paid_back BY !f WITH !c /SAVE PREDVAL(guess) PREDPROB(p).\n";
  predselect_table* table = open_loans();
  const predselect_run_options options = {.struct_size = sizeof options, .state_path = state_path};
  predselect_result* result = NULL;
  check(predselect_run(session, table, kCommands, &options, &result), "the commands");
  predselect_table_close(table);  // the result keeps what it needs
  print_tables(result, "PredictorSummary");
  print_new_columns(result, "Predictions");
  predselect_result_close(result);
}

static void score_again(const char* state_path) {
  predselect_state* model = NULL;
  check(predselect_state_load(session, state_path, &model), "the model");
  check(predselect_state_save(session, model, "loans.xml"), "a copy of the model");
  predselect_table* table = open_loans();
  predselect_result* result = NULL;
  check(predselect_score(session, table, model, NULL, &result), "the scores");
  print_new_columns(result, "Predictions of the model from its file");
  predselect_result_close(result);
  predselect_table_close(table);
  predselect_state_close(model);
}

static void make_a_mistake(void) {
  predselect_table* table = open_loans();
  predselect_result* result = NULL;
  const predselect_status status =
      predselect_run(session, table, "SELECTPRED paid_bak BY home.", NULL, &result);
  printf("A mistake gives status %d:\n%s\n", (int)status, predselect_session_error(session));
  predselect_result_close(result);
  predselect_table_close(table);
}

int main(void) {
  if (predselect_abi_version() != PREDSELECT_ABI_VERSION) return 2;
  pack(&home, kHome);
  pack(&paid_back, kPaidBack);
  check(predselect_session_open(&session), "the session");
  check(predselect_session_set_application(session, "Loan desk", "1.0"), "the application");
  check(predselect_session_set_progress(session, show_progress, stderr), "the progress");
  rank_and_learn("loans.bin");
  score_again("loans.bin");
  make_a_mistake();
  predselect_session_close(session);
  remove("loans.bin");
  remove("loans.xml");
  return 0;
}
