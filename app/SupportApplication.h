#pragma once

#include "BaseApplication.h"

#include <memory>

class SupportMainWindow;

class SupportApplication : public BaseApplication
{
    Q_OBJECT

public:
    SupportApplication(int& argc, char** argv);
    ~SupportApplication() override;

    // Builds the window and starts the loading pass once the event loop runs; the window is shown
    // only when the pass has finished.
    void createMainWindow();

private:
    struct Private;
    std::unique_ptr<Private> d;
};
