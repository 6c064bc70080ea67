// src/data/column_definitions.cpp - data file display and column definitions.
#include "data/column_definitions.h"

#include "session.h"

namespace invsetup {

void display_data_file(Session& /*session*/, int /*slot*/) {}
void display_location_column_definitions(Session& /*session*/, int /*slot*/) {}

}  // namespace invsetup
