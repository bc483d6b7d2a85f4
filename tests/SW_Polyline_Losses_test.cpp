// What a user could lose with lines whose points are no numbers, as projecting on a surface without heights makes them:
// nothing, and neither to files of such a project that are cut, gone or damaged.

#include "SW_Polyline_TestSupport.h"

#include <cmath>
#include <filesystem>
#include <map>

namespace {

namespace fs = std::filesystem;

class SW_Polyline_Losses : public LineTest {
protected:
    SW_Polyline_Losses()
    {
        auto* trough = meshes->CreateMesh("trough");   // of radius 20 m: most of its heights are no numbers
        for (const auto& [attr, value] : {std::pair{"Nx", "100"}, {"Ny", "10"}, {"Dx", "10"}, {"Dy", "10"}})
            trough->Set(attr, value);
        Messages();
        trough->Set("SetToPlane", "");
        ExpectWarning("Project/DHMs/trough: heights farther than 20 m from the middle are no numbers");
        AddPlane("alp", 0.5);
        AddLine("good", "1 2 3;4 5 6");
        AddLine("onTrough", "10 20 0;500 20 0;900 20 0");
        AddLine("far", "0 0 0;1 1 1");
        AddPolygon("area", "10 10 0;90 10 0;90 90 0");
        set = Add<SW_PolylineSet>(*polylines, "drawing");
        set->Set("Import", File("two.nxyz", "name=low\n2\n495 10 0\n505 10 0\nname=high\n2\n10 20 0\n20 20 0\n"));
        Messages();
    }

    void ExpectWarning(const std::string& text)
    {
        Lines found = Messages();
        std::erase_if(found, [&](const std::string& message) { return message.find(text) == std::string::npos; });
        EXPECT_EQ(found.size(), 1u) << text;
        for (const std::string& message : found) EXPECT_EQ(message.rfind("WARNING:", 0), 0u) << message;
    }

    // All that makes such points.
    void MakeThem()
    {
        const struct {
            AK_Object* object;
            const char* warning;
        } steps[] = {{polylines->Component("onTrough"),
                      "Project/Polylines/onTrough: points with coordinates that are no numbers or too large: 2"},
                     {polygons->Component("area"), "Project/Polygons/area: points with coordinates"},
                     {set, "Project/Polylines/drawing 'high': points with coordinates"}};
        for (const auto& step : steps) {
            EXPECT_EQ(SetOn(*step.object, "ProjectOnto", "trough"), "");
            ExpectWarning(step.warning);
        }
        SetPoints(static_cast<SW_Polyline&>(*polylines->Component("far")), "1e300 0 0;1 1 1");
        ExpectWarning("Project/Polylines/far: points with coordinates");
    }

    // Path below the directory -> bytes.
    std::map<std::string, std::string> Saved(const char* name) const
    {
        std::map<std::string, std::string> files;
        const fs::path top = (directory / name).c_str();
        for (const auto& entry : fs::recursive_directory_iterator(top))
            if (entry.is_regular_file())
                files[entry.path().lexically_relative(top).string()] = FileBytes(entry.path().c_str());
        return files;
    }

    // Opens the project in a program started anew, and saves it.
    AK_String OpenAndSave(const char* name)
    {
        viewer = std::make_unique<AK_Container>("Viewer", nullptr);
        project = Add<AK_Container>(*viewer, "Project");
        meshes = Add<SW_Meshes>(*project, "DHMs");
        polylines = Add<SW_Polylines>(*project, "Polylines");
        polygons = Add<SW_Polygons>(*project, "Polygons");
        Messages();
        viewer->Set("LoadProject", directory / name);
        const AK_String status = AK_Object::_execStatus;
        viewer->Set("SaveProject", "");
        return status;
    }

    SW_PolylineSet* set = nullptr;
};

}   // namespace

TEST_F(SW_Polyline_Losses, PointsThatAreNoNumbersAreToldAndComeBackAsTheyWereSaved)
{
    MakeThem();
    viewer->Set("SaveProjectAs", directory / "p");
    const auto saved = Saved("p");
    ASSERT_EQ(saved.count("Project/Polylines/far/Polyline.dat"), 1u);
    EXPECT_EQ(OpenAndSave("p"), "");
    Lines warnings = Messages();
    std::erase_if(warnings, [](const std::string& message) { return message.rfind("WARNING:", 0) != 0; });
    EXPECT_EQ(warnings.size(), 4u) << "a line each";
    EXPECT_TRUE(std::isnan(static_cast<SW_Polyline*>(polylines->Component("onTrough"))->Points()[2].z));
    EXPECT_EQ(polylines->Component("onTrough")->Get("BoundingBox"), "10 20 0 900 20 0") << "of what is a number";
    EXPECT_TRUE(Saved("p") == saved);

    AK_Object* alp = meshes->Component("alp");
    const int cells = static_cast<SW_Mesh*>(alp)->NumCells();
    EXPECT_EQ(SetOn(*alp, "InsertBreakLine", "../../Polylines/far"),
              "Viewer/Project/Polylines/far: points have coordinates that are no numbers or too large");
    EXPECT_EQ(static_cast<SW_Mesh*>(alp)->NumCells(), cells) << "no triangulation is made of them";
}

TEST_F(SW_Polyline_Losses, ADamagedFileTakesNoOtherWithIt)
{
    MakeThem();
    viewer->Set("SaveProjectAs", directory / "p");
    const auto saved = Saved("p");
    const fs::path p = (directory / "p").c_str(), q = (directory / "q").c_str();
    for (const auto& [file, whole] : saved) {
        const AK_String path = directory / "q/" + file.c_str();
        std::vector<std::string> damages;
        for (size_t part : {0, 1, 2, 3}) damages.push_back(whole.substr(0, whole.size() * part / 4));
        for (size_t at = 0; at < whole.size(); at += whole.size() / 3 + 1) {
            damages.push_back(whole);
            damages.back()[at] = char(damages.back()[at] ^ 0xFF);
        }
        damages.push_back("");   // removed
        for (size_t i = 0; i < damages.size(); ++i) {
            SCOPED_TRACE(file + ", damage " + std::to_string(i));
            fs::remove_all(q);
            fs::copy(p, q, fs::copy_options::recursive);
            WriteFile(path, damages[i]);
            if (i + 1 == damages.size()) AK_System::RemoveFile(path);
            OpenAndSave("q");
            auto after = Saved("q");
            for (const auto& [other, bytes] : saved)
                EXPECT_TRUE(other == file || after[other] == bytes) << other;
        }
    }
}
