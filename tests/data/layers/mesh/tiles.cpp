// A mesh file that reaches up: the comment may name FormModel and session.form.
#include "mesh/tiles.h"
#include "form/form_model.h"
void show(Session& session) { session.form.set_text("Text_num_cells", 5, "41"); }
