// src/form/inversion_definition.cpp - what the readers take from the definition.
#include "form/inversion_definition.h"

#include "data/location_file.h"

namespace invsetup {

LocationFileSettings location_settings(const InversionDefinition& definition, int slot) {
    const auto s = static_cast<std::size_t>(slot);
    LocationFileSettings settings;
    settings.file = definition.data_file_names.at(s);
    settings.file_kind = definition.data_file_kinds.at(s);
    settings.first_line = definition.data_first_lines.at(s);
    settings.read_step = definition.data_read_steps.at(s);
    settings.x_column = definition.data_x_columns.at(s);
    settings.y_column = definition.data_y_columns.at(s);
    settings.z_column = definition.data_z_columns.at(s);
    if (slot == 0) {
        settings.value_columns = definition.data_value_columns;
        settings.line_column = definition.line_column;
        settings.extra_value_column = definition.extra_value_column;
        settings.integration_interval = definition.integration_interval;
    }
    settings.transform = definition.coordinate_transform;
    update_point_transform(settings.transform);
    return settings;
}

}  // namespace invsetup
