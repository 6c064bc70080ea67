// src/data/topo_file.cpp - the "topo.dat" writer.
#include "data/topo_file.h"

#include <exception>
#include <stdexcept>
#include <string>

#include "session.h"
#include "support/lines.h"
#include "support/numbers.h"

namespace invsetup {

int write_topo_file(Session& session, const std::filesystem::path& file, int x_first, int x_last, int y_first,
                    int y_last) {
    try {
        const InversionMesh& mesh = session.mesh;
        const Array2<float>& elevations = session.topography.topo_nodes;
        if (x_first < 1 || y_first < 1 || x_last > mesh.nx + 1 || y_last > mesh.ny + 1 || x_first > x_last ||
            y_first > y_last || elevations.rows() < x_last || elevations.columns() < y_last)
            throw std::out_of_range("the nodes " + std::to_string(x_first) + ".." + std::to_string(x_last) + " by " +
                                    std::to_string(y_first) + ".." + std::to_string(y_last) +
                                    " are not all on the gridded surface");
        LineWriter out(file);
        const long count = static_cast<long>(x_last - x_first + 1) * (y_last - y_first + 1);
        out.write_line(std::to_string(count));
        std::string line;
        for (int j = y_first; j <= y_last; ++j) {
            const std::string y_text = general_number_text(mesh.y_nodes[j]);
            for (int i = x_first; i <= x_last; ++i) {
                line = general_number_text(mesh.x_nodes[i]);
                line += ' ';
                line += y_text;
                line += ' ';
                line += general_number_text(elevations(i, j));
                out.write_line(line);
            }
        }
        out.close();
        return 0;
    } catch (const std::exception& fault) {
        session.dialogue.message_box(std::string("The topo file could not be written: ") + fault.what());
        return -1;
    }
}

}  // namespace invsetup
