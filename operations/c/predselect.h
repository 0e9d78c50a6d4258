// PredSelect for C, and for every language that calls C: tables of data in, ranked predictors and
// Naive Bayes classifiers out.
//
// Data go in and come out as Arrow C streams. Their structs are those of the Arrow C data
// interface: take them from your Arrow library, or from predselect/host/data/ArrowCDataInterface.h.
// Texts are UTF-8 and end with a zero byte; paths are as the system has them.
//
// Failure. A function that can fail returns a predselect_status and sets whatever it makes to NULL
// (a stream: to released) unless it says otherwise. The session that it was called with keeps the
// reason in words: predselect_session_error(). NULL where something is needed is PREDSELECT_MISUSE,
// never a crash. No C++ exception leaves a function.
//
// Ownership. What you were given by ..._open, ..._load, or as a result is yours until you close it;
// the order of closing does not matter, and closing NULL does nothing. Texts and structs that you
// pass are read during the call only. Texts that you are given belong to the object that you asked:
// each function says how long they stay. Streams that you are given are yours to release, and stay
// good when everything else is closed.
//
// Threads. Use each object from one thread at a time (predselect_session_cancel() apart); a table,
// the results made from it and their streams count as one object. Different objects may be used by
// different threads at once, so a thread needs a session of its own. A job uses the thread that
// made the call, and others where the session says so; callbacks come on the thread that made the
// call.
//
// What never changes as long as predselect_abi_version() stays the same: the functions here with
// their signatures, the values of the constants, the fields of the structs with their order, and
// who owns what. What may come: functions, values of predselect_status, and fields at the end of
// the structs that begin with struct_size. Set struct_size to the size of the struct that you
// compiled with, and every field that you do not need to zero:
//   predselect_run_options options = {.struct_size = sizeof options, .state_path = "model.bin"};
#ifndef PREDSELECT_H
#define PREDSELECT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

struct ArrowArrayStream;

// The library that runs says which interface it has: call on only where it is this one.
#define PREDSELECT_ABI_VERSION 1
uint32_t predselect_abi_version(void);

// Of the library, such as "1.2.3". Stays.
const char* predselect_version(void);

// Do not renumber. Take a value that you do not know for a failure.
typedef enum predselect_status {
  PREDSELECT_OK = 0,
  PREDSELECT_COMMAND_ERROR = 1,     // a command reported an error; the result's messages say which
  PREDSELECT_BAD_REQUEST = 2,       // what was asked for is not there, or does not fit
  PREDSELECT_DATA_ERROR = 3,        // data or a file could not be read or written
  PREDSELECT_NO_MEMORY = 4,         // there is not enough memory
  PREDSELECT_CANCELLED = 5,         // the cancel callback asked to stop
  PREDSELECT_BROKEN_INVARIANT = 6,  // an error of the library's own: close the objects of the call
  PREDSELECT_MISUSE = 7             // NULL, a wrong number, or a session that is busy
} predselect_status;

typedef struct predselect_session predselect_session;  // what the application says of itself
typedef struct predselect_table predselect_table;      // data in memory, with their dictionary
typedef struct predselect_state predselect_state;      // a saved ranking or model
typedef struct predselect_result predselect_result;    // what a job brought forth

// ---- Sessions -----------------------------------------------------------------------------------

predselect_status predselect_session_open(predselect_session** session);
void predselect_session_close(predselect_session* session);

// Why the last call with this session failed, "" when it did not. Stays until the next call with
// it.
const char* predselect_session_error(const predselect_session* session);

// What else one should know of what the last call with this session has done, a sentence a line, ""
// for nothing: predselect_state_export() tells here what the format cannot say of the model. Stays
// until the next call with it.
const char* predselect_session_notes(const predselect_session* session);

// What the application is called in the files that are written.
predselect_status predselect_session_set_application(predselect_session* session, const char* name,
                                                     const char* version);

// Where jobs put the training cases that the memory does not hold, "/tmp" unless set; without a
// slash at its end. What is put aside while data are read (PREDSELECT_KEEP_ASIDE, packed text, the
// tables of a database) goes where the environment's TMPDIR says.
predselect_status predselect_session_set_temp_folder(predselect_session* session, const char* path);

// Asked often during a job, save for the quick predselect_inspect; not 0 ends it as soon as
// possible with PREDSELECT_CANCELLED. Callbacks must be quick, return normally, and not call
// functions with the same session (these are PREDSELECT_MISUSE). user_data is handed back as it is.
// A NULL callback turns it off.
typedef int (*predselect_cancel_query)(void* user_data);
predselect_status predselect_session_set_cancel(predselect_session* session,
                                                predselect_cancel_query query, void* user_data);

// Ends the job under way with the session as the callback above does, from any thread and without
// waiting. Does nothing where there is none, so ask again until the job has ended.
void predselect_session_cancel(predselect_session* session);

// Told how far a long job has come, in words that stay during the call only.
typedef void (*predselect_progress_listener)(void* user_data, const char* text);
predselect_status predselect_session_set_progress(predselect_session* session,
                                                  predselect_progress_listener listener,
                                                  void* user_data);

// How many threads a job may use, the caller's among them: 1 unless set, 0 for as many as the
// system lets the process run at once; more than 1024 are PREDSELECT_MISUSE. No result depends on
// it.
predselect_status predselect_session_set_threads(predselect_session* session, size_t threads);

// Files that hold keys, of 16 to 4096 bytes that nobody but owner and group may read: what jobs and
// predselect_state_save write is signed with the first from now on, and predselect_state_load
// refuses what was not signed with the second. NULL for none, as it is unless set.
predselect_status predselect_session_set_state_keys(predselect_session* session,
                                                    const char* sign_key_path,
                                                    const char* verify_key_path);

// ---- Tables -------------------------------------------------------------------------------------

// Do not renumber.
typedef enum predselect_level {
  PREDSELECT_NOMINAL = 1,
  PREDSELECT_ORDINAL = 2,
  PREDSELECT_SCALE = 3
} predselect_level;

// One variable's level. Keeps its size.
typedef struct predselect_variable_level {
  const char* variable;
  int32_t level;  // a predselect_level
} predselect_variable_level;

// How data are to be read, as the program's option of that name has it: {"delimiter", ";"},
// {"missing", "age=99,999"}, {"no-header", ""}. Keeps its size.
typedef struct predselect_reading_option {
  const char* name;
  const char* word;  // NULL for an option that takes none
} predselect_reading_option;

// Bytes of the caller's. Keeps its size.
typedef struct predselect_bytes {
  const void* data;  // may be NULL where size is 0
  size_t size;
} predselect_bytes;

// Where the cells of a table are while it is open. Results do not depend on it. Do not renumber.
#define PREDSELECT_KEEP_CELLS ((size_t)0)  // in memory: 8 bytes a number, 4 bytes a text
#define PREDSELECT_KEEP_BATCHES \
  ((size_t)1)  // in the stream's own batches, which are held without a
               // copy and must not change; every pass reads them again
#define PREDSELECT_KEEP_ASIDE \
  ((size_t)2)  // in a temporary file, batch by batch as they come: for
               // data that are larger than memory

typedef struct predselect_table_options {
  size_t struct_size;
  const char* name;    // of the data, in messages and documents; NULL for "data"
  const char* schema;  // a Table Schema (version 2) document; NULL for none
  const char* weight;  // the frequency weight variable; NULL for none
  const predselect_variable_level* levels;  // these overrule the schema, later ones earlier ones
  size_t n_levels;
  size_t keep;                               // PREDSELECT_KEEP_CELLS and so on
  const predselect_reading_option* reading;  // of a stream only "missing" has an effect
  size_t n_reading;
  // The merged ranges of the table whose part this is (see "Tables in parts"), and the number of
  // the part among them, from 0. Levels, labels, missing values and weight are then those of the
  // ranges, and schema, weight, levels and reading must not be given. NULL for a table that stands
  // for itself.
  const predselect_bytes* ranges;
  int64_t part;
} predselect_table_options;

// Reads a stream of records to its end. Takes the stream over: it is released in every case, also
// when the call fails. A variable without a level in schema or levels gets one by its values. NULL
// options are those without a wish.
predselect_status predselect_table_open(predselect_session* session,
                                        struct ArrowArrayStream* stream,
                                        const predselect_table_options* options,
                                        predselect_table** table);
void predselect_table_close(predselect_table* table);

// What the user should know of how the data were read, a sentence a line; "" for nothing. Stays
// until the table is closed.
predselect_status predselect_table_notes(predselect_session* session, const predselect_table* table,
                                         const char** notes);

// The function below stands in a library of its own, predselectcfiles, which brings Arrow C++ with
// it.

typedef struct predselect_file_options {
  size_t struct_size;
  const char* const* nulls;  // further texts that are missing in delimited text
  size_t n_nulls;
} predselect_file_options;

// The table of a data file, or of a folder or a pattern of files, as the program opens it: text
// (.csv, .tsv), .parquet, .arrow, .feather, .jsonl, .json, .xlsx, .ods, and tables of a database.
// PREDSELECT_KEEP_ASIDE keeps nothing in memory and reads the file again on every pass;
// PREDSELECT_KEEP_BATCHES is PREDSELECT_MISUSE here. A schema also says how columns of text are
// read. NULL options are those without a wish; without a name the path is the data's.
predselect_status predselect_table_open_file(predselect_session* session, const char* path,
                                             const predselect_file_options* file_options,
                                             const predselect_table_options* table_options,
                                             predselect_table** table);

// ---- States -------------------------------------------------------------------------------------

predselect_status predselect_state_load(predselect_session* session, const char* path,
                                        predselect_state** state);

// What messages and documents call the state, in place of the path that it was loaded from.
predselect_status predselect_state_set_name(predselect_session* session, predselect_state* state,
                                            const char* name);

// XML where the name ends in ".xml", else binary. The file appears whole or not at all.
predselect_status predselect_state_save(predselect_session* session, const predselect_state* state,
                                        const char* path);

// Adds what `from` has counted to `into`, as if one run had counted both. States that do not fit
// together are PREDSELECT_BAD_REQUEST, and `into` is then as it was.
predselect_status predselect_state_merge(predselect_session* session, predselect_state* into,
                                         const predselect_state* from);

// Writes a model as PMML for other programs ("PMML 4.3"). A ranking is PREDSELECT_BAD_REQUEST. The
// file appears whole or not at all.
predselect_status predselect_state_pmml(predselect_session* session, const predselect_state* state,
                                        const char* path);

void predselect_state_close(predselect_state* state);

// ---- Jobs ---------------------------------------------------------------------------------------
// Each gives a result with PREDSELECT_OK, and also with PREDSELECT_COMMAND_ERROR and
// PREDSELECT_CANCELLED: it then holds what was done until then, messages above all.

// How a model's probabilities are made to hold what they say: by the test cases, or without any by
// cross-validation. Do not renumber.
#define PREDSELECT_CALIBRATE_NOT ((size_t)0)
#define PREDSELECT_CALIBRATE_TEMPERATURE ((size_t)1)
#define PREDSELECT_CALIBRATE_ISOTONIC ((size_t)2)

// What the system and the control groups of the process leave free decides.
#define PREDSELECT_MEMORY_AUTO ((size_t)-1)

typedef struct predselect_run_options {
  size_t struct_size;
  const char* state_path;      // where the last command's state is saved; NULL for nowhere
  const char* results_folder;  // made for the result documents; NULL for none
  size_t memory;  // kilobytes for the cases of a command that needs memory and states none; 0 for
                  // the command's own default, PREDSELECT_MEMORY_AUTO for half of what is free
  size_t calibrate;         // models: PREDSELECT_CALIBRATE_NOT and so on
  size_t calibration_seed;  // of cross-validation; 0 for 1
} predselect_run_options;

// Runs a text of one or more commands, each ended by a period at the end of a line or
// before the first word of the next. One that reports an error does not keep the later ones from
// running. New variables stay in the table, also those of a job that was cancelled. NULL options
// are those without a wish.
predselect_status predselect_run(predselect_session* session, predselect_table* table,
                                 const char* commands, const predselect_run_options* options,
                                 predselect_result** result);

// Do not renumber.
typedef enum predselect_rank_by {
  PREDSELECT_BY_P = 0,       // the exact p-value: of Pearson's chi-square between categories
  PREDSELECT_BY_LR = 1,      // that of the likelihood ratio
  PREDSELECT_BY_V = 2,       // Cramer's V, where target and predictors are categorical
  PREDSELECT_BY_LAMBDA = 3,  // lambda, there
  PREDSELECT_BY_BITS = 4     // mutual information
} predselect_rank_by;

typedef struct predselect_rank_options {
  size_t struct_size;
  size_t by;                  // a predselect_rank_by
  const char* const* except;  // variables that are no predictors
  size_t n_except;
  size_t top;  // so many are shown; 0 for all
} predselect_rank_options;

// How each variable of the table, taken alone, goes with the target: exact p-values, effect sizes,
// adjusted p-values, in the table "Ranking". NULL options are those without a wish.
predselect_status predselect_rank(predselect_session* session, predselect_table* table,
                                  const char* target, const predselect_rank_options* options,
                                  predselect_result** result);

typedef struct predselect_model_options {
  size_t struct_size;
  const char* const* except;  // variables that are no predictors
  size_t n_except;
  const char* training_column;  // is 1 in the cases that train the model; NULL for a random share
  double test;              // share of the cases that test the model; 0 for 0.3, below 0 for none
  size_t predictors;        // at most so many; 0 for as many as serve it
  size_t save_predictions;  // not 0: as new variables of the table
  const char* state_path;   // where the model is saved; NULL for nowhere
  const char* pmml_path;    // where it is written as PMML; NULL for nowhere
  size_t memory;            // as for predselect_run; 0 is PREDSELECT_MEMORY_AUTO here
  size_t folds;             // cross-validates with so many folds, 2 to 1000, instead of test
                            // cases; 0 for not
  size_t repeats;           // of that, with other folds each time; 0 for 1, up to 1000
  size_t seed;              // which folds; up to 2^31 - 1
  size_t calibrate;         // as for predselect_run
  size_t calibration_seed;
} predselect_model_options;

// A Naive Bayes classifier of the target with the predictors that serve it best, in the tables
// "ChosenPredictors", "Accuracy" and "WorstConfusions"; what test cases say of it in "Evaluation",
// what folds say in "CrossValidation", "SelectionStability" and "Folds". NULL options are those
// without a wish.
predselect_status predselect_model(predselect_session* session, predselect_table* table,
                                   const char* target, const predselect_model_options* options,
                                   predselect_result** result);

// What the table holds, variable by variable: names, types, levels and why, valid, missing and
// distinct values, moments, quantiles, histograms, most frequent values.
predselect_status predselect_describe(predselect_session* session, predselect_table* table,
                                      predselect_result** result);

// What a state holds. Counts that are not ranked yet are ranked by this, and cannot be merged any
// more.
predselect_status predselect_inspect(predselect_session* session, predselect_state* state,
                                     predselect_result** result);

typedef struct predselect_score_options {
  size_t struct_size;
  const char* predicted;      // name of the predicted value; NULL for "PredictedValue"
  const char* probabilities;  // root of the names of the probabilities, "" for none of them;
                              // NULL for "PredictedProbability"
  size_t explain;  // not 0: new variables, too, with what so many predictors that weighed most add
                   // to the log-odds of each prediction
} predselect_score_options;

// Predicts the cases of the table with a model's state, in new variables of the table. They stay in
// it, filled in part, when the job is cancelled or meets a value that the model cannot take (a text
// for a number, a number for a text: PREDSELECT_BAD_REQUEST). NULL options are those without a
// wish.
predselect_status predselect_score(predselect_session* session, predselect_table* table,
                                   const predselect_state* state,
                                   const predselect_score_options* options,
                                   predselect_result** result);

// How good a model's state is on the cases of the table, whose target is known: the tables
// "Evaluation", "ClassEvaluation", "ConfusionMatrix", "Calibration" and "EvaluatedCases". The
// weight of the table counts.
predselect_status predselect_evaluate(predselect_session* session, predselect_table* table,
                                      const predselect_state* state, predselect_result** result);

// ---- Results ------------------------------------------------------------------------------------

// Everything, as one JSON document: messages, notes, tables, charts, macros, new variables, files
// (the program's has also what it draws reports from). Stays until the result is closed.
predselect_status predselect_result_json(predselect_session* session, predselect_result* result,
                                         const char** json);

// Everything, as a page to read, `width` columns wide (0 for 100). Stays until the result is closed
// or asked for another page.
predselect_status predselect_result_text(predselect_session* session, predselect_result* result,
                                         size_t width, const char** text);

// Everything, as one HTML page that asks no network for anything; `heading` says what it is about
// (NULL for the name of the data). Stays until the result is closed or asked for another.
predselect_status predselect_result_html(predselect_session* session, predselect_result* result,
                                         const char* heading, const char** html);

// Everything but the cells of new variables, as bytes for predselect_result_restore() of the same
// version: for a result that goes to another process. They stay until the result is closed.
predselect_status predselect_result_keep(predselect_session* session, predselect_result* result,
                                         const char** bytes, size_t* size);

// The result that the bytes were kept of, which is not of a table any more. Bytes that are damaged
// or of another version are PREDSELECT_DATA_ERROR.
predselect_status predselect_result_restore(predselect_session* session, const char* bytes,
                                            size_t size, predselect_result** result);

// How many tables there are, those of all commands in order.
predselect_status predselect_result_table_count(predselect_session* session,
                                                const predselect_result* result, size_t* count);

// Texts stay until the result is closed.
typedef struct predselect_table_info {
  size_t struct_size;
  const char* subtype;  // what kind of table it is: "PredictorSummary"
  const char* title;    // the key of its title: "Predictor Summary"
  const char* command;  // the command that made it
  size_t run;           // the number of that command, from 0
} predselect_table_info;

// Fills in as many fields as struct_size, which you set, has room for.
predselect_status predselect_result_table_info(predselect_session* session,
                                               const predselect_result* result, size_t index,
                                               predselect_table_info* info);

// A table laid flat, one record a row of the page:
//   - text fields with the headings of the row, for each row dimension and then each layer
//     dimension: "<name>: Group 1", ... for nested headings from the outermost, and "<name>" for
//     the row's own;
//   - a field a column, named by its headings joined with ": ": 64-bit floating point at full
//     precision, or text where any of its cells is one.
// Missing cells are null. Texts are the keys, names and values of the JSON document; a field's
// metadata "label" is what the page shows. Metadata of the stream: "title", "label", "subtype".
predselect_status predselect_result_table(predselect_session* session,
                                          const predselect_result* result, size_t index,
                                          struct ArrowArrayStream* stream);

// The same table as records under names that stay, those of the program's --format csv: fields in
// small letters joined with "_" ("test_value"); a cell a record where the columns are values of the
// data (a classification table), a name a record where cells are lists of names, and a field a
// number where they are lists of numbers.
predselect_status predselect_result_records(predselect_session* session,
                                            const predselect_result* result, size_t index,
                                            struct ArrowArrayStream* stream);

// The variables that the job added to the table (none: a stream without fields), in the order of
// the cases: numbers as 64-bit floating point and texts, missing cells as null, labels as metadata
// "label". They go beside the columns of the stream that the table was opened from, which are the
// caller's, with types and values of their own. A result of predselect_inspect is not of a table:
// PREDSELECT_MISUSE.
predselect_status predselect_result_new_columns(predselect_session* session,
                                                const predselect_result* result,
                                                struct ArrowArrayStream* stream);

void predselect_result_close(predselect_result* result);

// ---- Models for other programs
// --------------------------------------------------------------------

typedef struct predselect_export_options {
  size_t struct_size;
  const char* format;  // "pmml" (one that evaluators agree on), "onnx", "sql", "c", "json"; NULL:
                       // by the ending of the path
  const char* table;   // that the SQL query reads; NULL for "data"
} predselect_export_options;

// Writes a model's state in a form that scores elsewhere as predselect_score does. The file appears
// whole or not at all; predselect_session_notes() tells what it cannot say. PREDSELECT_BAD_REQUEST
// for a format that is none, and for a model that the format cannot hold. NULL options are those
// without a wish.
predselect_status predselect_state_export(predselect_session* session,
                                          const predselect_state* state, const char* path,
                                          const predselect_export_options* options);

// ---- Tables in parts ----------------------------------------------------------------------------
// A table may lie in parts (files, partitions of a cluster's table) that are never brought
// together. docs/scale.md shows the steps: find the ranges of each part, merge them, open the table
// of parts where the job is to run, and answer its passes where the parts are. Whoever ships the
// bytes looks into none of them.

// Bytes that a part has made: ranges, an answer, or codes. Closed like any other object.
typedef struct predselect_piece predselect_piece;

// The bytes stay until the piece is set anew or closed.
predselect_status predselect_piece_bytes(predselect_session* session, const predselect_piece* piece,
                                         predselect_bytes* bytes);
// Makes the piece a copy of the bytes. For predselect_part_pass below, from within it; needs no
// session. PREDSELECT_MISUSE for NULL.
predselect_status predselect_piece_set(predselect_piece* piece, const void* data, size_t size);
void predselect_piece_close(predselect_piece* piece);

// What a part knows of the ranges and categories of its table, in one pass over its cases. `part`
// is its number among the parts, from 0 to 2^31 - 1, which says in which order the cases of the
// parts stand: no two parts have the same.
predselect_status predselect_part_ranges(predselect_session* session, predselect_table* table,
                                         int64_t part, predselect_piece** ranges);

// Brings pieces of one kind into one: ranges, or answers to one request. Merge in any order and in
// any tree: ranges and counts are the same to the last bit for whole-number weights; other sums
// differ in their last digits, and not at all for the same tree. PREDSELECT_BAD_REQUEST for pieces
// that do not fit together; the error names the piece by its place, from 0.
predselect_status predselect_pieces_merge(predselect_session* session,
                                          const predselect_bytes* pieces, size_t n_pieces,
                                          predselect_piece** merged);

// What a pass goes over. Do not renumber.
#define PREDSELECT_OVER_ROWS ((int32_t)1)  // predselect_part_answer of each part
#define PREDSELECT_OVER_ROWS_KEEP \
  ((int32_t)2)  // the same, and the codes of each part are kept until the job ends, or until the
                // next pass of this kind
#define PREDSELECT_OVER_CODES ((int32_t)3)  // predselect_codes_answer of the codes of each part

// Called by a job over a table of parts, on its thread: brings the request to every part, merges
// the answers with predselect_pieces_merge (with another session), and sets `answer` to the merged
// bytes. Not 0 when it failed or was cancelled, for which predselect_session_set_cancel's query
// says the same; `answer` may then hold the reason as UTF-8 text. The request stays during the call
// only.
typedef int (*predselect_part_pass)(void* user_data, int32_t over, const void* request, size_t size,
                                    predselect_piece* answer);

// The table of parts: predselect_rank, predselect_model and predselect_run take it as any other,
// save that nothing can be done with its single cases (saved predictions, predselect_describe and
// predselect_score are PREDSELECT_DATA_ERROR). `name` as in predselect_table_options.
predselect_status predselect_table_open_parts(predselect_session* session,
                                              const predselect_bytes* ranges, const char* name,
                                              predselect_part_pass pass, void* user_data,
                                              predselect_table** table);

// Answers a request over the cases of a part that was opened with the merged ranges. `codes` is set
// where the pass is PREDSELECT_OVER_ROWS_KEEP, else NULL, and may be NULL where it is not. The
// same request to the same part has the same answer.
predselect_status predselect_part_answer(predselect_session* session, predselect_table* table,
                                         const predselect_bytes* request, predselect_piece** answer,
                                         predselect_piece** codes);

// Answers a request over the codes of a part.
predselect_status predselect_codes_answer(predselect_session* session,
                                          const predselect_bytes* codes,
                                          const predselect_bytes* request,
                                          predselect_piece** answer);

// ---- Explanations
// --------------------------------------------------------------------------------

// What each predictor of a model's state says of the classes of each case, in new variables of the
// table, which are not those of predselect_score: for each predictor, in the order of the model,
// the logarithm of the probability of its value given the second class less that given the first;
// of more than two classes one variable a class, predictor by predictor, less the mean over all
// classes. A missing value says 0. The result's table "BaseValues" has the same of the priors, by
// class: a case's sum is the posterior's log-odds, of more than two classes numbers of which the
// softmax is the posterior. Of a model with isotonic curves it is the posterior before these, which
// is not what predselect_score gives. "WeightsOfEvidence" has what all values say, by predictor, in
// order.
predselect_status predselect_explain(predselect_session* session, predselect_table* table,
                                     const predselect_state* state, predselect_result** result);

#ifdef __cplusplus
}
#endif

#endif  // PREDSELECT_H
