#include "ProcessEnd.h"
#include "SupportApplication.h"

int main(int argc, char** argv)
{
    int result = 0;
    {
        SupportApplication application(argc, argv);
        application.createMainWindow();
        result = application.exec();
    }
    return endProcess(result);
}
