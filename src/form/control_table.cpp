// src/form/control_table.cpp - every control of the form, declared once.
#include "form/form_model.h"

namespace invsetup {

namespace {
using K = ControlKind;
constexpr ControlSpec table[] = {
    {"Tab_inversion", no_index, K::tabs, "", "Parameters\nObserved Data\nTopo Data\nMesh\nCreate Inversion", "", -1, ""},
};
}  // namespace

std::span<const ControlSpec> form_control_table() { return table; }

}  // namespace invsetup
