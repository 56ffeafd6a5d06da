// A run on a worker has messages of its own.
#include "workbench/interface_messages.h"

#include "platform/host.h"
#include "workbench/workbench.h"

namespace photrak {
namespace {

class InterfaceMessages : public Messages {
  public:
    explicit InterfaceMessages(Workbench& workbench) : workbench_(workbench) {}

    void ShowStatusText(std::string_view text) override { workbench_.pane = text; }
    void ErrorBox(std::string_view text, std::string_view title) override {
        workbench_.desktop.Box(BoxKind::Error, title, text);
    }
    void InfoBox(std::string_view text, std::string_view title) override {
        workbench_.desktop.Box(BoxKind::Information, title, text);
    }
    bool QueryBox(std::string_view text, std::string_view title) override {
        return workbench_.desktop.Query(title, text) == Answer::Yes;
    }

  private:
    Workbench& workbench_;
};

struct MessagesInForce {
    explicit MessagesInForce(Workbench& workbench) : messages(workbench), scope(HostWith()) {}
    Host HostWith() {
        Host host = CurrentHost();
        host.messages = &messages;
        return host;
    }

    InterfaceMessages messages;
    HostScope scope;
};

}  // namespace

std::shared_ptr<void> TakeMessages(Workbench& workbench) {
    return std::make_shared<MessagesInForce>(workbench);
}

}  // namespace photrak
