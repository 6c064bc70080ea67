#include "data/readings.h"
#include "session.h"
void append(Session* s) { FormUpdate guard(s->form); }
void keep(Format& format, Platform& platform) { format.form_feed = platform.formats; }
