// What the tests of the commands share that other plug-ins carry out: a structure in a window, and
// plug-ins that record what they are sent.
#pragma once

#include "Compound.h"
#include "RecordingPlugins.h"
#include "WindowTestCase.h"

#include <memory>

class RecordingTestCase : public window_tools::WindowTestCase {
protected:
    void init() override {
        TestCase::init();
        m_shown = window_tools::addStructure("1abc");
    }
    void cleanup() override {
        m_window.reset();
        m_plugins.reset();
        WindowTestCase::cleanup();
    }

    /// Opens the window, after loading the plug-ins, and shows the structure if there is one.
    void showWindow(bool withPlugins = true) {
        if (withPlugins)
            m_plugins = std::make_unique<RecordingPlugins>();
        openWindow();
        if (m_shown)
            window_tools::clickEntry(*m_window, 0);
    }

    std::unique_ptr<RecordingPlugins> m_plugins;
    TAVIK::Compound* m_shown = nullptr;
};
