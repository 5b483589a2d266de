/// Texts for the numbers in messages. Internal.
#pragma once

#include <cstddef>
#include <utility>

#include <fokrazo/ipc_opcode.h>
#include <fokrazo/validation_result.h>

namespace vesk {

// Row i belongs to value i; a row with another value marks a gap.

extern const std::pair<IPC_OPCODE, const char*> IPC_OPCODE_STRS[IPC_OP_UNKNOWN + 1];
extern const std::pair<IPC_RESULT, const char*> IPC_RESULT_STRS[4];
extern const std::pair<ValidationResult, const char*> VALIDATION_RESULT_STRS[48];

/// The text of a value, `unknown` for a value without a row.
template <class Value, size_t Rows>
const char* textOf(const std::pair<Value, const char*> (&table)[Rows], Value value, const char* unknown) {
  const auto index = static_cast<unsigned int>(value);
  return index < Rows && table[index].first == value ? table[index].second : unknown;
}

}  // namespace vesk
