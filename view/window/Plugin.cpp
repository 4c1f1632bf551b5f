// The plug-in's entry points, the only symbols that the library exports.
#include "GUIPlugin.h"

#include "PictureFile.h"
#include "PluginManager.h"
#include "View3D.h"

namespace {

view::View3D* theView = nullptr;

/// "Picture": writes a picture, whose file and size are the call's argument, as "out.png
/// 1600x1200".
void picture(const void*, PluginResult* result);
void pictureWritable(void* input, PluginResult* result) {
    picture(input, result);
}

/// "AskForPicture": asks the user for size and file, and writes a picture.
void pictureDialog(const void*, PluginResult*);
void pictureDialogWritable(void* input, PluginResult* result) {
    pictureDialog(input, result);
}

/// "ShowAll": shows everything, as one looks at it now.
void showWhole(const void*, PluginResult*);
void showWholeWritable(void* input, PluginResult* result) {
    showWhole(input, result);
}

class ViewPlugin : public view::View3D {
public:
    ViewPlugin() {
        theView = this;
        GUIPlugin<ViewPlugin>::addAction("Picture", &pictureWritable);
        GUIPlugin<ViewPlugin>::addAction("Picture", &picture);
        GUIPlugin<ViewPlugin>::addAction("AskForPicture", &pictureDialogWritable);
        GUIPlugin<ViewPlugin>::addAction("AskForPicture", &pictureDialog);
        GUIPlugin<ViewPlugin>::addAction("ShowAll", &showWholeWritable);
        GUIPlugin<ViewPlugin>::addAction("ShowAll", &showWhole);
    }
    ~ViewPlugin() override { theView = nullptr; }
};

void picture(const void*, PluginResult* result) {
    const PluginCall* const call = PluginManager::CurrentCall();
    const std::string argument = call ? call->argument : std::string();
    std::string problem =
        "\"" + argument +
        "\" is no file and size of a picture, as \"out.png 1600x1200\", of up to " +
        std::to_string(view::largestSide) + " pixels a side and " +
        std::to_string(view::largestArea) + " in all";
    if (const auto request = view::pictureRequest(argument))
        problem = theView->savePicture(request->path, request->size);
    if (problem.empty())
        return;
    result->SetResultCode(PluginResult::Failure);
    result->SetResultText(problem);
}

void pictureDialog(const void*, PluginResult*) {
    theView->askForPicture();
}

void showWhole(const void*, PluginResult*) {
    theView->showAll();
}

} // namespace

GUI_PLUGIN(ViewPlugin)
