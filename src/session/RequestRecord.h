// The records that devices send, taken apart and put together again: one home for what the two
// kinds of request packets have in common. Plain text work; tests use the packets themselves.
#pragma once

#include "support/Failure.h"

#include <string>
#include <vector>

namespace brennik {

/// The fields of a record, none behind the last; empty when it can't be split.
std::vector<std::string> FieldsOf(const std::string& strRecord);

/// Rebuilds the record from its fields, which trims and quotes them anew.
std::string RecordOf(std::vector<std::string> strFields);

/// Lets edit change the fields and rebuilds the record, whether or not anything was changed. A
/// record of fewer than nFields fields stays as it is, and so does one on which anything fails.
template <class Edit>
void EditRecord(std::string& strRecord, size_t nFields, Edit&& edit) {
    Quietly([&] {
        std::vector<std::string> strFields = FieldsOf(strRecord);
        if (strFields.size() >= nFields) {
            edit(strFields);
            strRecord = RecordOf(std::move(strFields));
        }
    });
}

} // namespace brennik
