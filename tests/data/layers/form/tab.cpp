#include "form/tab.h"
#include "mesh/tiles.h"
void show(Session& session, FormModel& form) { FormUpdate guard(session.form); }
