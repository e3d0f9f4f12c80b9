#include "desk/ui/BehindProgress.h"

#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <QCoreApplication>
#include <chrono>
#include <future>

void RunBehindProgress(const std::string &status, const std::function<void(SACommand *)> &work)
{
    using namespace std::chrono_literals;
    CTarvoProgressDlg progress;
    progress.SetStatus(status);
    std::future<void> running = std::async(std::launch::async, [&] {
        CommandScope scope(nullptr);
        work(scope.get());
    });
    while (running.wait_for(30ms) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    progress.Close();
    running.get();
}
