// What the slots of the window do to items and rows, where that takes more than a line.
#pragma once

#include "PlainWindow.h"

namespace plain {

/// What is typed into the dialog of a command.
QString typedIn(const Step& step);
/// Changes the selection or the display of an item, and refreshes the window.
void update(Model& model, Item* root, const std::function<void()>& apply);
void selectFullGroups(Model& model, Item* root);
void selectRadius(Model& model, Item* root, const char* kind, const Step& step);
void boundGrids(Model& model);
void invertSelection(Model& model, const Step&);
void showSelected(Model& model, bool on);
void hideUnselected(Model& model, Item* root);
void forSelectedRows(Model& model, const std::function<void(Item&)>& use);
/// Blue over white to red, in a hundred colours from 0 to 60.
std::uint32_t colorOfTemperature(float temperature);
void forSelectedResidues(Model& model, const std::function<void(Item&)>& use);
void switchModels(Model& model, Host::Switch way);
void applyPattern(Model& model, const std::function<void(Item&, bool matches)>& use);
/// Sends a command to another plug-in: a line in the log says what was sent, or that nobody is
/// there.
void send(Model& model, const char* plugin, const char* command, const char* argument,
          const QString& value, const char* overload = "Command");
void makeSurface(Model& model, const char* command, const char* argument);
void makeAtLevel(Model& model, const char* label, const char* command, const char* argument,
                 const Step& step);
void makeCartesian(Model& model);
void makeSet(Model& model, const Step& step);

} // namespace plain
