/* What callers that were compiled once rely on. A line here never changes: what is new gets a line
 * of its own. Compiling is the test. */
#include <stddef.h>
#include <stdint.h>

#include "operations/c/predselect.h"

#define SAME(what, value) _Static_assert((what) == (value), #what " has changed")

SAME(PREDSELECT_ABI_VERSION, 1);

SAME(sizeof(predselect_status), 4);
SAME(PREDSELECT_OK, 0);
SAME(PREDSELECT_COMMAND_ERROR, 1);
SAME(PREDSELECT_BAD_REQUEST, 2);
SAME(PREDSELECT_DATA_ERROR, 3);
SAME(PREDSELECT_NO_MEMORY, 4);
SAME(PREDSELECT_CANCELLED, 5);
SAME(PREDSELECT_BROKEN_INVARIANT, 6);
SAME(PREDSELECT_MISUSE, 7);
SAME(PREDSELECT_NOMINAL, 1);
SAME(PREDSELECT_ORDINAL, 2);
SAME(PREDSELECT_SCALE, 3);

/* Places are in pointers, so that they hold wherever a size_t is as wide as one. */
#define PLACE(type, field, pointers) SAME(offsetof(type, field), (pointers) * sizeof(void*))
SAME(sizeof(size_t), sizeof(void*));

PLACE(predselect_variable_level, variable, 0);
PLACE(predselect_variable_level, level, 1);
SAME(sizeof(predselect_variable_level), 2 * sizeof(void*));

PLACE(predselect_table_options, struct_size, 0);
PLACE(predselect_table_options, name, 1);
PLACE(predselect_table_options, schema, 2);
PLACE(predselect_table_options, weight, 3);
PLACE(predselect_table_options, levels, 4);
PLACE(predselect_table_options, n_levels, 5);
PLACE(predselect_table_options, keep, 6);
PLACE(predselect_table_options, reading, 7);
PLACE(predselect_table_options, n_reading, 8);
PLACE(predselect_table_options, ranges, 9);
SAME(offsetof(predselect_table_options, part), 10 * sizeof(int64_t));
PLACE(predselect_bytes, data, 0);
PLACE(predselect_bytes, size, 1);
SAME(sizeof(predselect_bytes), 2 * sizeof(void*));
SAME(PREDSELECT_OVER_ROWS, 1);
SAME(PREDSELECT_OVER_ROWS_KEEP, 2);
SAME(PREDSELECT_OVER_CODES, 3);
PLACE(predselect_reading_option, name, 0);
PLACE(predselect_reading_option, word, 1);
SAME(sizeof(predselect_reading_option), 2 * sizeof(void*));
SAME(PREDSELECT_KEEP_CELLS, 0);
SAME(PREDSELECT_KEEP_BATCHES, 1);
SAME(PREDSELECT_KEEP_ASIDE, 2);

PLACE(predselect_file_options, struct_size, 0);
PLACE(predselect_file_options, nulls, 1);
PLACE(predselect_file_options, n_nulls, 2);

PLACE(predselect_run_options, struct_size, 0);
PLACE(predselect_run_options, state_path, 1);
PLACE(predselect_run_options, results_folder, 2);
PLACE(predselect_run_options, memory, 3);
PLACE(predselect_run_options, calibrate, 4);
PLACE(predselect_run_options, calibration_seed, 5);
SAME(PREDSELECT_MEMORY_AUTO, SIZE_MAX);
SAME(PREDSELECT_CALIBRATE_NOT, 0);
SAME(PREDSELECT_CALIBRATE_TEMPERATURE, 1);
SAME(PREDSELECT_CALIBRATE_ISOTONIC, 2);

PLACE(predselect_score_options, struct_size, 0);
PLACE(predselect_score_options, predicted, 1);
PLACE(predselect_score_options, probabilities, 2);
PLACE(predselect_score_options, explain, 3);

PLACE(predselect_export_options, struct_size, 0);
PLACE(predselect_export_options, format, 1);
PLACE(predselect_export_options, table, 2);

PLACE(predselect_table_info, struct_size, 0);
PLACE(predselect_table_info, subtype, 1);
PLACE(predselect_table_info, title, 2);
PLACE(predselect_table_info, command, 3);
PLACE(predselect_table_info, run, 4);

SAME(PREDSELECT_BY_P, 0);
SAME(PREDSELECT_BY_LR, 1);
SAME(PREDSELECT_BY_V, 2);
SAME(PREDSELECT_BY_LAMBDA, 3);
SAME(PREDSELECT_BY_BITS, 4);
PLACE(predselect_rank_options, struct_size, 0);
PLACE(predselect_rank_options, by, 1);
PLACE(predselect_rank_options, except, 2);
PLACE(predselect_rank_options, n_except, 3);
PLACE(predselect_rank_options, top, 4);

PLACE(predselect_model_options, struct_size, 0);
PLACE(predselect_model_options, except, 1);
PLACE(predselect_model_options, n_except, 2);
PLACE(predselect_model_options, training_column, 3);
SAME(offsetof(predselect_model_options, test), 4 * sizeof(double));
PLACE(predselect_model_options, predictors, 5);
PLACE(predselect_model_options, save_predictions, 6);
PLACE(predselect_model_options, state_path, 7);
PLACE(predselect_model_options, pmml_path, 8);
PLACE(predselect_model_options, memory, 9);
PLACE(predselect_model_options, folds, 10);
PLACE(predselect_model_options, repeats, 11);
PLACE(predselect_model_options, seed, 12);
PLACE(predselect_model_options, calibrate, 13);
PLACE(predselect_model_options, calibration_seed, 14);
