// tests/gui/window_test.cpp - the window built from the control table, kept in step with the form
// model, and a whole creation driven through its menu and buttons (QtTest, offscreen platform).
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTabWidget>
#include <QTest>
#include <filesystem>

#include "form_binder.h"
#include "main_window.h"
#include "picture_view.h"
#include "qt_dialogue.h"
#include "tiling_overlay.h"
#include "utility_dialogs.h"

#include <QStatusBar>
#include <QToolButton>

#include <QDateEdit>
#include <QDoubleSpinBox>
#include <set>
#include "session.h"
#include "test_support.h"

using namespace invsetup;
using namespace invsetup::gui;
namespace fs = std::filesystem;

namespace {

/// A window over a session whose dialogue records everything.
struct Harness {
    HeadlessDialogue dialogue;
    Session session{dialogue};
    MainWindow window{session};

    QWidget* widget(const char* name, int index = no_index) { return window.binder().widget(name, index); }
    template <class W>
    W* as(const char* name, int index = no_index) {
        return qobject_cast<W*>(widget(name, index));
    }
    /// The row of the method list whose item data is `code`.
    int method_row(int code) {
        for (int row = 0; row < session.form.row_count("Combo_inversion_method"); ++row)
            if (session.form.item_data("Combo_inversion_method", no_index, row) == code) return row;
        return -1;
    }
    /// Chooses a method as a person would, through the list's widget.
    void choose_method(int code) {
        auto* combo = as<QComboBox>("Combo_inversion_method");
        const int row = method_row(code);
        combo->setCurrentIndex(row);
        emit combo->activated(row);
    }
    bool shown(const char* name, int index = no_index) { return !widget(name, index)->isHidden(); }
    /// Reads `definition` through File > Read, with its folder as the working directory.
    void read_definition(const fs::path& definition) {
        session.working_directory = definition.parent_path();
        dialogue.file_answers.push_back(definition.string());
        window.binder().action("menu_read_file", 0)->trigger();
    }
};

}  // namespace

class WindowTest : public QObject {
    Q_OBJECT
private slots:
    void init() { QSettings().clear(); }

    void every_control_of_the_table_has_its_widget_showing_as_the_model_says() {
        Harness h;
        int checked = 0;
        for (const Control* control : h.session.form.controls()) {
            const ControlSpec& declared = *control->declared;
            if (declared.kind == ControlKind::menu_entry) {
                QAction* action = h.window.binder().action(declared.name, declared.index);
                QVERIFY2(action != nullptr, control_key(declared.name, declared.index).c_str());
                QCOMPARE(action->isVisible(), control->visible);
                continue;
            }
            if (declared.tab < 0 || declared.name == "Form_mag3d" || declared.name == "Drive1") continue;  // overlay, window, drives
            QWidget* w = h.window.binder().widget(declared.name, declared.index);
            QVERIFY2(w != nullptr, control_key(declared.name, declared.index).c_str());
            if (is_floating_control(declared.name) || declared.name == "Tab_images" || declared.name == "Frame_point_data" ||
                declared.name == "Grid_database" || declared.name == "Frame_data_file_definitions" ||
                declared.name == "Frame_data_file_image" || declared.name == "Frame_field" || declared.name == "Frame_gravity_parameters")
                continue;  // places shared with another control
            QVERIFY2(w->isHidden() == !control->visible, control_key(declared.name, declared.index).c_str());
            QCOMPARE(w->isEnabled(), control->enabled);
            ++checked;
        }
        QVERIFY(checked > 200);
        QCOMPARE(h.window.tabs()->count(), 5);
        QCOMPARE(h.window.tabs()->tabText(4), QString("Create Inversion"));
        QCOMPARE(h.as<QGroupBox>("Frame_field")->title(), QString("Magnetic Field"));
        // Tooltips come from the table's meanings.
        QCOMPARE(h.widget("Text_error_floor")->toolTip(), QString("Absolute minimum error value"));
    }

    void switching_the_method_shows_and_hides_what_the_method_needs() {
        Harness h;
        struct Expect {
            const char* name;
            int index;
            bool shown;
        };
        // UBC Gravity V5 (code 5).
        h.choose_method(5);
        QCOMPARE(h.session.definition.inversion_method, 5);
        const Expect gravity_v5[] = {
            {"Frame_field", no_index, false},           {"Frame_gravity_parameters", no_index, false},
            {"Frame_magsen3d", 0, true},                {"Frame_magsen3d", 1, true},
            {"Frame_parameter_bounds", no_index, true}, {"Combo_inversion_mode", no_index, true},
            {"Label_inversion_mode", 0, true},          {"Label_data_type", 0, false},
            {"Combo_data_type", 0, false},              {"Combo_optional_data_type", 0, false},
            {"Check_generate_inversion_variation", no_index, true},
            {"Check_update_data_files", no_index, false}, {"Label_smoothness_method", no_index, true},
            {"Frame_background_removal_method", no_index, false}, {"Check_topo_shift", no_index, true},
        };
        for (const Expect& e : gravity_v5) QVERIFY2(h.shown(e.name, e.index) == e.shown, e.name);
        QCOMPARE(h.as<QGroupBox>("Frame_parameter_bounds")->title(), QString("Model Density Bounds"));
        QCOMPARE(h.as<QLabel>("Label_weight")->text(), QString("Density Bounds File"));
        QVERIFY(h.widget("Text_depth_weighting_file", 1)->isEnabled());
        QVERIFY(h.widget("Text_NumThreads")->isEnabled());
        QCOMPARE(h.as<QComboBox>("Combo_alpha_method")->currentIndex(), 1);

        // UBC Gravity V2 (code 1): the gravity frame takes the field's place, no misfit tolerance.
        h.choose_method(1);
        const Expect gravity_v2[] = {
            {"Frame_field", no_index, false},     {"Frame_gravity_parameters", no_index, true},
            {"Frame_magsen3d", 0, false},         {"Frame_parameter_bounds", no_index, false},
            {"Label_inversion_mode", 2, false},   {"Check_generate_inversion_variation", no_index, false},
            {"Combo_inversion_mode", no_index, false},
        };
        for (const Expect& e : gravity_v2) QVERIFY2(h.shown(e.name, e.index) == e.shown, e.name);
        QVERIFY(!h.widget("Text_inversion_tolc")->isEnabled());
        QVERIFY(!h.widget("Text_inversion_par")->isEnabled());

        // The in-house method: its mode rows, background removal, data types.
        h.choose_method(4);
        auto* modes = h.as<QComboBox>("Combo_inversion_mode");
        QCOMPARE(modes->count(), 5);
        QCOMPARE(modes->itemText(0), QString("Normal 3D"));
        QVERIFY(h.shown("Frame_background_removal_method"));
        QVERIFY(h.shown("Combo_data_type", 0));
        QVERIFY(!h.shown("Check_topo_shift"));
        QVERIFY(!h.shown("Frame_gravity_parameters"));
        // A caption standing for a box follows it.
        QVERIFY(h.shown("Combo_optional_data_type", 0));
    }

    void typing_reaches_the_model_and_its_validators() {
        Harness h;
        h.choose_method(0);
        auto* par = h.as<QLineEdit>("Text_inversion_par");
        par->setFocus();
        par->selectAll();
        QTest::keyClicks(par, "0.25");
        QCOMPARE(h.session.form.text("Text_inversion_par"), std::string("0.25"));
        QCOMPARE(h.session.definition.trade_off_parameter, 0.25f);
        QTest::keyClicks(par, "x");  // not a number: the field keeps its value
        QCOMPARE(h.session.definition.trade_off_parameter, 0.25f);

        // A box that checks on leaving: letters go back to the stored value, with a beep.
        h.choose_method(1);
        auto* chi = h.as<QLineEdit>("Text_chi_factor");
        chi->selectAll();
        QTest::keyClicks(chi, "abc");
        emit chi->editingFinished();
        QCOMPARE(chi->text(), QString("1.000"));
        QCOMPARE(h.dialogue.beeps, 1);

        // Check boxes and option pairs.
        auto* variation = h.as<QCheckBox>("Check_generate_inversion_variation");
        h.choose_method(0);
        QTest::mouseClick(variation, Qt::LeftButton, {}, QPoint(5, variation->height() / 2));
        QVERIFY(h.session.form.checked("Check_generate_inversion_variation"));
        QVERIFY(h.widget("Command_create_inversion", 2)->isEnabled());
        QVERIFY(h.widget("Label_weights")->autoFillBackground());  // green: a variation may change it
    }

    void a_creation_through_the_window_writes_the_package_of_the_command_line() {
        const testing::TempDir dir;
        testing::copy_example("magnetic", dir.path());
        const fs::path definition = dir.path() / "inversion.inp";
        const std::string original = testing::read_file_bytes(definition);

        const testing::CliRun cli =
            testing::run_cli("create --quiet " + testing::quoted(definition) + " " + testing::quoted(dir.path() / "run"));
        QVERIFY2(cli.exit_code == 0, cli.err.c_str());
        const auto expected = testing::package(dir.path() / "run");
        QVERIFY(expected.size() >= 8);  // mesh, model, observations, inputs, batch files and their twins
        const std::string expected_beside = testing::read_file_bytes(dir.path() / "run.inp");
        const std::string expected_working = testing::read_file_bytes(definition);
        fs::rename(dir.path() / "run", dir.path() / "run_cli");
        fs::remove(dir.path() / "run.inp");
        testing::write_file_bytes(definition, original);

        Harness h;
        h.dialogue.answer_yes = false;  // as the command line answers
        h.read_definition(definition);
        QVERIFY2(h.dialogue.messages.empty(), h.dialogue.messages.empty() ? "" : h.dialogue.messages.front().c_str());
        QCOMPARE(h.window.windowTitle(), QString("3D inversion setup: inversion.inp"));

        h.session.form.set_text("Dir1", dir.path().string());
        auto* name = h.as<QLineEdit>("Text_directory_name");
        name->clear();
        QTest::keyClicks(name, "run");
        h.window.tabs()->setCurrentIndex(4);
        QTest::mouseClick(h.as<QPushButton>("Command_create_inversion", 0), Qt::LeftButton);
        QVERIFY2(h.dialogue.messages.size() <= 1, h.dialogue.messages.front().c_str());
        QVERIFY(h.session.form.text("Text_progress").find("Inversion processing complete") != std::string::npos);

        const auto written = testing::package(dir.path() / "run");
        QCOMPARE(written.size(), expected.size());
        for (const auto& [file, bytes] : expected) {
            QVERIFY2(written.count(file) == 1, file.c_str());
            QVERIFY2(written.at(file) == bytes, file.c_str());
        }
        QVERIFY(testing::read_file_bytes(dir.path() / "run.inp") == expected_beside);
        QVERIFY(testing::read_file_bytes(definition) == expected_working);
        // Nothing is left busy: the buttons are back.
        QVERIFY(h.widget("Command_create_inversion", 0)->isEnabled());
    }

    void a_column_box_opens_the_name_list_over_itself() {
        const testing::TempDir dir;
        testing::copy_example("magnetic", dir.path());
        Harness h;
        h.read_definition(dir.path() / "inversion.inp");
        h.window.tabs()->setCurrentIndex(1);
        h.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&h.window));

        auto* names = h.as<QComboBox>("Combo_names", 0);
        QVERIFY(names != nullptr && names->isHidden());
        auto* box = h.as<QLineEdit>("Text_UBC_locations_magpos", 0);
        QCOMPARE(box->text(), QString("tmi"));
        QTest::mouseClick(box, Qt::LeftButton);
        QVERIFY(!names->isHidden());
        QCOMPARE(names->geometry().topLeft(), box->mapTo(names->parentWidget(), QPoint(0, 0)));
        QCOMPARE(names->itemText(0), QString("N/A"));
        names->hidePopup();
        const int y_row = names->findText("y");
        QVERIFY(y_row > 0);
        names->setCurrentIndex(y_row);
        emit names->activated(y_row);
        QVERIFY(names->isHidden());
        QCOMPARE(box->text(), QString("y"));
        QCOMPARE(h.session.definition.data_value_columns[0], y_row);
        h.window.close();
    }

    void the_tiling_layout_paints_the_plan_and_follows_the_pointer_and_the_spin_arrows() {
        const testing::TempDir dir;
        testing::copy_example("magnetic", dir.path());
        Harness h;
        h.read_definition(dir.path() / "inversion.inp");
        h.window.resize(1200, 800);
        h.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&h.window));
        QVERIFY(h.window.tiling_overlay()->isHidden());

        h.window.tabs()->setCurrentIndex(3);
        QTest::mouseClick(h.as<QPushButton>("Command_view_tiling"), Qt::LeftButton);
        QVERIFY2(h.dialogue.messages.empty(), h.dialogue.messages.empty() ? "" : h.dialogue.messages.front().c_str());
        QVERIFY(h.window.tiling_overlay()->isVisible());
        QVERIFY(h.session.tiling_view.lines.size() >= 8);  // the frame and the mesh limits at least
        auto* picture = h.window.binder().picture("Picture_tiling_layout");
        QCOMPARE(h.session.tiling_view.width, static_cast<double>(picture->width()));

        // The pointer over the middle of the plan: local coordinates in the first panel.
        QTest::mouseMove(picture, picture->rect().center());
        emit picture->pointer_moved(picture->width() / 2.0, picture->height() / 2.0);
        const QList<QLabel*> panels = h.as<QStatusBar>("StatusBar_coords")->findChildren<QLabel*>();
        QVERIFY(panels.size() >= 2);
        QVERIFY2(panels[0]->text().startsWith("5020"), qPrintable(panels[0]->text()));  // x 500000..504000

        // X max down by one cell: the box and the plan follow.
        const std::string before = h.session.form.text("Text_max_val", 0);
        auto* spin = h.widget("UpDown_clip", 1);
        QToolButton* down = spin->findChildren<QToolButton*>().at(1);
        QTest::mouseClick(down, Qt::LeftButton);
        QCOMPARE(h.session.form.text("Text_max_val", 0), std::string("503950"));
        QVERIFY(before != h.session.form.text("Text_max_val", 0));

        QTest::mouseClick(h.as<QPushButton>("Command_done_tiling_layout"), Qt::LeftButton);
        QVERIFY(h.window.tiling_overlay()->isHidden());
        h.window.close();
    }

    void working_directory_window_size_and_tab_are_remembered() {
        const testing::TempDir dir;
        {
            Harness h;
            h.session.working_directory = dir.path();
            h.window.tabs()->setCurrentIndex(2);
            h.window.resize(1000, 700);
            h.window.close();
        }
        QCOMPARE(QSettings().value("CWD").toString().toStdString(), dir.path().string());
        Harness again;
        QCOMPARE(again.session.working_directory, dir.path());
        QCOMPARE(again.window.tabs()->currentIndex(), 2);
        QCOMPARE(again.window.size(), QSize(1000, 700));
        QCOMPARE(again.session.form.text("Dir1"), dir.path().string());
    }

    void the_transform_form_edits_every_field_of_the_record() {
        PointTransform transform;
        TransformDialog dialog(transform);
        const QList<QDoubleSpinBox*> boxes = dialog.findChildren<QDoubleSpinBox*>();
        QCOMPARE(boxes.size(), 13);
        for (qsizetype i = 0; i < boxes.size(); ++i) boxes[i]->setValue(1000.0 + static_cast<double>(i));
        const PointTransform edited = dialog.transform();
        const std::set<double> values{edited.angle,    edited.x_scale,  edited.y_scale, edited.local_x0, edited.local_x1,
                                      edited.map_x0,   edited.map_x1,   edited.local_y0, edited.local_y1, edited.map_y0,
                                      edited.map_y1,   edited.z_offset, edited.z_scale};
        QCOMPARE(values.size(), std::size_t{13});  // each box has a field of its own
        QCOMPARE(*values.begin(), 1000.0);
        QCOMPARE(*values.rbegin(), 1012.0);
        QVERIFY(dialog.findChild<QCheckBox*>()->isChecked());  // such a transform is on
    }

    void the_igrf_form_calculates_the_field_for_a_date_and_place() {
        const IgrfModel model = IgrfModel::read(fs::path(INVSETUP_TEST_DATA) / ".." / ".." / "data" / "igrf14coeffs.txt");
        IgrfDialog dialog(&model, QString());
        QVERIFY(!dialog.field());
        dialog.findChild<QDateEdit*>()->setDate(QDate(2022, 2, 6));
        const QList<QDoubleSpinBox*> boxes = dialog.findChildren<QDoubleSpinBox*>();
        QCOMPARE(boxes.size(), 3);
        boxes[0]->setValue(114.85);
        boxes[1]->setValue(43.53);
        boxes[2]->setValue(829100);
        for (QPushButton* button : dialog.findChildren<QPushButton*>())
            if (button->text() == "&Calculate") button->click();
        QVERIFY(dialog.field().has_value());
        QVERIFY(std::abs(dialog.field()->intensity - 37565.4) < 2.0);
        bool shown = false;
        for (QLineEdit* box : dialog.findChildren<QLineEdit*>())
            shown = shown || box->text().startsWith("3756");
        QVERIFY(shown);
    }

    void file_filters_become_qt_filters() {
        struct Case {
            const char* filter;
            const char* qt;
        };
        const Case cases[] = {
            {"Inversion definition Files|*.inp;*.inp|All files (*.*)|*.*", "Inversion definition Files (*.inp);;All files (*)"},
            {"Data Files (*.dat;*.xyz;*.csv,*.grd;*.ers)|*.dat;*.xyz;*.csv;*.grd;*.ers",
             "Data Files (*.dat *.xyz *.csv *.grd *.ers)"},
            {"UBC mesh Files|*.mesh;*.msh;*.dat;mesh", "UBC mesh Files (*.mesh *.msh *.dat mesh)"},
        };
        for (const Case& c : cases) QCOMPARE(qt_file_filter(c.filter), QString(c.qt));
    }
};

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    // The settings of the tests stay apart from a person's.
    const testing::TempDir config;
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config.path().string()));
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName("invsetup-tests");
    QCoreApplication::setApplicationName("gui_tests");
    WindowTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "window_test.moc"
