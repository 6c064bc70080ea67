// tests/modelfiles/model_file_read_test.cpp - model files of every form on a 2 x 2 x 2 mesh (and a
// layered 2 x 1 x 4 one), their messages, damaged files, and round trips through the writer.
#include "modelfiles/model_file_read.h"

#include <gtest/gtest.h>

#include <limits>

#include <cstring>
#include <deque>

#include "modelfiles/mesh_file_read.h"
#include "session.h"
#include "test_support.h"

namespace invsetup {
namespace {

/// Answers text prompts from a queue (the default when it is empty) and records them.
class PromptDialogue : public HeadlessDialogue {
public:
    std::deque<std::string> text_answers;
    std::vector<std::string> prompts;
    std::string ask_text(const std::string& prompt, const std::string& initial) override {
        prompts.push_back(prompt);
        if (text_answers.empty()) return initial;
        std::string answer = text_answers.front();
        text_answers.pop_front();
        return answer;
    }
};

std::string binary_model(unsigned char version, std::initializer_list<float> values) {
    std::string bytes = "UBC";
    bytes.push_back(static_cast<char>(version));
    for (float value : values) bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
    return bytes;
}

struct ModelRead : ::testing::Test {
    PromptDialogue dialogue;
    Session session{dialogue};
    testing::TempDir dir;
    LoadedModel& model = session.loaded_model;
    LoadedMesh& mesh = session.loaded_mesh;

    void SetUp() override {
        mesh.nx = mesh.ny = mesh.nz = 2;
        mesh.loaded = true;
    }
    int read(const std::string& bytes) {
        const auto path = dir.path() / "test.sus";
        testing::write_file_bytes(path, bytes);
        return read_model_file(dialogue, path.string(), mesh, model);
    }
    /// The values in storage order (x fastest, then y, then z from the top).
    std::vector<float> values() const { return model.values.values; }
};

// Cell (i, j, k) of the text files below holds 100 k + 10 j + i.
const std::vector<float> storage_order{111, 112, 121, 122, 211, 212, 221, 222};

TEST_F(ModelRead, TextOrdersPutEachValueInItsCell) {
    struct Case {
        int order;
        const char* text;
    };
    const Case cases[] = {
        {1, "111\r\n211\r\n112\r\n212\r\n121\r\n221\r\n122\r\n222\r\n"},  // y, x, z: the UBC order
        {2, "111 112 121 122\r\n211 212 221 222\r\n"},                    // z, y, x
        {3, "121,111,122,112\r\n221,211,222,212\r\n"},                    // z, x, y falling
        {4, "122\n121\n112\n111\n222\n221\n212\n211\n"},                  // z, y falling, x falling (LF lines)
        {5, "121 122 111 112 221 222 211 212"},                           // z, y falling, x
    };
    for (const Case& c : cases) {
        model.model_order = c.order;
        ASSERT_EQ(read(c.text), 0) << c.order;
        EXPECT_EQ(values(), storage_order) << c.order;
    }
    EXPECT_TRUE(dialogue.messages.empty());
}

TEST_F(ModelRead, TextWithoutAnOrderTakesNoValueAndLoadsAsNull) {
    testing::write_file_bytes(dir.path() / "m.sus", "5\r\n6\r\n7\r\n8\r\n1\r\n2\r\n3\r\n4\r\n");
    ASSERT_EQ(load_model(session, (dir.path() / "m.sus").string()), 0);
    // 0 is not above the null value of 0: every cell is null and there are no extremes.
    EXPECT_EQ(values(), std::vector<float>(8, -1e32f));
    EXPECT_TRUE(model.loaded);
    EXPECT_FLOAT_EQ(model.model_min, 1e32f);
    EXPECT_FLOAT_EQ(model.model_max, -1e32f);
}

TEST_F(ModelRead, BinaryHeaderVersionsOneToEight) {
    ASSERT_EQ(read(binary_model(1, {1, 2, 3, 4, 5, 6, 7, 8})), 0);
    EXPECT_EQ(values(), (std::vector<float>{1, 2, 3, 4, 5, 6, 7, 8}));
    // A short file fills what it holds; the rest stays 0.
    ASSERT_EQ(read(binary_model(8, {9, 10})), 0);
    EXPECT_EQ(values(), (std::vector<float>{9, 10, 0, 0, 0, 0, 0, 0}));
    // Version bytes 0 and 9 make a text file, which (without an order) gives no values.
    for (unsigned char version : {0, 9}) {
        ASSERT_EQ(read(binary_model(version, {1, 2, 3, 4, 5, 6, 7, 8})), 0);
        EXPECT_EQ(values(), std::vector<float>(8, 0.0f));
    }
}

TEST_F(ModelRead, BinaryLoadScalesByZeroAndNullsWhatIsNotAboveZero) {
    testing::write_file_bytes(dir.path() / "m.bin", binary_model(3, {2.5f, -1, 0, 4, 1e-3f, 7, -9, 3}));
    ASSERT_EQ(load_model(session, (dir.path() / "m.bin").string()), 0);
    const float n = -1e32f;
    EXPECT_EQ(values(), (std::vector<float>{0, n, n, 0, 0, 0, n, 0}));
    EXPECT_FLOAT_EQ(model.model_min, 0);
    EXPECT_FLOAT_EQ(model.model_max, 0);
    EXPECT_EQ(model.display_mode, 1);
}

TEST_F(ModelRead, KindsSixAndEightHoldTheInverse) {
    model.model_kind = 6;
    model.scale = 100;
    testing::write_file_bytes(dir.path() / "m.bin", binary_model(1, {4, -2, 50, 100, 1, 2, 5, 10}));
    ASSERT_EQ(load_model(session, (dir.path() / "m.bin").string()), 0);
    EXPECT_EQ(values(), (std::vector<float>{25, -1e32f, 2, 1, 100, 50, 20, 10}));
    EXPECT_FLOAT_EQ(model.model_min, 1);
    EXPECT_FLOAT_EQ(model.model_max, 100);
    EXPECT_EQ(model.display_mode, 2);
    // On a trapezoidal mesh the range shown starts at 0; the display mode was decided before.
    mesh.mesh_format = 4;
    ASSERT_EQ(load_model(session, (dir.path() / "m.bin").string()), 0);
    EXPECT_FLOAT_EQ(model.model_min, 0);
    EXPECT_FLOAT_EQ(model.model_max, 100);
    EXPECT_EQ(model.display_mode, 2);
}

TEST_F(ModelRead, MulticomponentAsksForTheComponent) {
    model.model_order = 1;
    const std::string text =
        "(1.0,2.0,3.0)\r\n(1.1,2.1,3.1)\r\n(1.2,x,3.2)\r\n(1.3,2.3,3.3)\r\n"
        "(1.4,2.4,3.4)\r\n(1.5,2.5,3.5)\r\n(1.6,2.6,3.6)\r\n(1.7,2.7,3.7)\r\n";
    dialogue.text_answers = {"2"};
    ASSERT_EQ(read(text), 0);
    ASSERT_EQ(dialogue.prompts.size(), 1u);
    EXPECT_EQ(dialogue.prompts[0], "The specified file is a multicomponent model, select which component you require (1,3)");
    // The UBC order: line 3 is cell (2, 1, 1); a word that isn't a number is the null value 0.
    EXPECT_EQ(values(), (std::vector<float>{2.0f, 0.0f, 2.4f, 2.6f, 2.1f, 2.3f, 2.5f, 2.7f}));

    struct Refusal {
        int order;
        const char* answer;
        const char* message;  // "" for none
    };
    const Refusal refusals[] = {
        {1, "4", "The selecetd component is invalid"},
        {1, "0", "The selecetd component is invalid"},
        {1, "", ""},
        {1, "two", ""},
        {4, "1", "The specified file is a multicomponent model and this format is not supported"},
    };
    for (const Refusal& r : refusals) {
        model.model_order = r.order;
        dialogue.messages.clear();
        dialogue.text_answers = {r.answer};
        EXPECT_EQ(read(text), -1) << r.answer;
        EXPECT_EQ(dialogue.messages, *r.message ? std::vector<std::string>{r.message} : std::vector<std::string>{})
            << r.answer;
    }
}

TEST_F(ModelRead, LayeredFormFillsAirAndSeaFromItsFirstLine) {
    mesh.mesh_format = 1;
    mesh.nx = 2;
    mesh.ny = 1;
    mesh.nz = 4;
    mesh.air_cells = 1;
    mesh.sea_cells = 1;
    // Sea value, air value; then layers 3 and 4, x fastest, read across lines.
    ASSERT_EQ(read("1.03 -1 ignored\r\n31 32\n41\r\n 42\r\n"), 0);
    EXPECT_EQ(values(), (std::vector<float>{-1, -1, 1.03f, 1.03f, 31, 32, 41, 42}));
    EXPECT_FLOAT_EQ(model.sea_value, 1.03f);
    EXPECT_FLOAT_EQ(model.air_value, -1);
}

TEST_F(ModelRead, DamagedFilesEndWithAMessage) {
    const std::string end = "Unexpected end of file was encountered while reading the model file";
    model.model_order = 1;
    EXPECT_EQ(read("1\r\n2\r\n3\r\n"), -1);
    EXPECT_EQ(dialogue.messages.back(), end);
    EXPECT_EQ(read(""), -1);
    // A layered file one value short of its last layer.
    mesh.mesh_format = 1;
    mesh.nz = 4;
    mesh.air_cells = mesh.sea_cells = 1;
    dialogue.messages.clear();
    EXPECT_EQ(read("0 0\r\n1 2 3"), -1);
    EXPECT_EQ(dialogue.messages, std::vector<std::string>{end});
    EXPECT_EQ(read_model_file(dialogue, (dir.path() / "missing.sus").string(), mesh, model), -1);
    EXPECT_EQ(dialogue.messages.back().rfind("An error occurred while reading the model file : \n", 0), 0u);
}

TEST_F(ModelRead, ValuesASingleRealCantHoldAreRefusedNamingTheFileAndTheValue) {
    // "%F" stands for the file's path.
    const std::string head = "An error occurred while reading the model file : \nThe model file %F could not be read at "
                             "its values: a value there is not a finite number a single real holds (";
    const struct {
        int mesh_format;
        int order;
        std::string bytes;
        std::string reason;
    } cases[] = {
        {0, 1, "1\r\n2\r\n1e39\r\n4\r\n5\r\n6\r\n7\r\n8\r\n", "the value 1e39 is not a finite number a single real holds)."},
        {0, 1, "1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n-1e309\r\n",
         "the value -1e309 is not a finite number a single real holds)."},
        {0, 0, binary_model(1, {1, 2, std::numeric_limits<float>::quiet_NaN(), 4, 5, 6, 7, 8}),
         "the stored value 3 is not a number)."},
        {0, 0, binary_model(1, {1, 2, 3, 4, 5, 6, 7, std::numeric_limits<float>::infinity()}), "the stored value 8 is infinite)."},
        {1, 0, "1e40 -1\r\n1 2 3 4\r\n", "the value 1e40 is not a finite number a single real holds)."},
    };
    const std::string path = (dir.path() / "test.sus").string();
    for (const auto& c : cases) {
        SCOPED_TRACE(c.reason);
        mesh.mesh_format = c.mesh_format;
        mesh.air_cells = mesh.sea_cells = 0;
        model.model_order = c.order;
        dialogue.messages.clear();
        EXPECT_EQ(read(c.bytes), -1);
        std::string message = head + c.reason;
        message.replace(message.find("%F"), 2, path);
        EXPECT_EQ(dialogue.messages, std::vector<std::string>{message});
    }
}

TEST_F(ModelRead, RoundTripsThroughTheWriter) {
    ModelValues written;
    written.size(2, 2, 2);
    written.values = {1.5f, -2.25f, 3e-4f, 12345.67f, 0, -1e32f, 7, 8};
    ModelWriteRequest request = whole_model_request(written);
    request.export_mode = model_export_binary;
    request.model_kind = 1;
    write_model_file(dialogue, dir.path() / "b.sus", written, request);
    ASSERT_EQ(read_model_file(dialogue, (dir.path() / "b.sus").string(), mesh, model), 0);
    EXPECT_EQ(values(), written.values);
    // The header byte is the model kind: kind 0 (what a model has unless told) reads back as text.
    request.model_kind = 0;
    write_model_file(dialogue, dir.path() / "b0.sus", written, request);
    ASSERT_EQ(read_model_file(dialogue, (dir.path() / "b0.sus").string(), mesh, model), 0);
    EXPECT_EQ(values(), std::vector<float>(8, 0.0f));

    // The text form in the UBC order, read back with that order: the picture keeps six digits.
    request.export_mode = 0;
    request.null_value = -99;
    write_model_file(dialogue, dir.path() / "t.sus", written, request);
    model.model_order = 1;
    ASSERT_EQ(read_model_file(dialogue, (dir.path() / "t.sus").string(), mesh, model), 0);
    EXPECT_EQ(values(), (std::vector<float>{1.5f, -2.25f, 3e-4f, 12345.7f, 0, -99, 7, 8}));
}

}  // namespace
}  // namespace invsetup
