#pragma once

#include "BaseApplication.h"
#include "SupportData.h"

#include <functional>
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
    // Makes a report and returns what it did, for the status bar.
    using ReportAction = std::function<QString(const SupportDataMap&)>;
    // Runs the action now, or once the network's first answers are in, while a dialog that can
    // cancel it shows the wait.
    void whenNetworkAnswered(const QString& action, const ReportAction& report);

    struct Private;
    std::unique_ptr<Private> d;
};
