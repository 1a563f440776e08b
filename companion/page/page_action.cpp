#include "companion/page/page_action.h"

#include <utility>

PageHandler actionHandler(PageAction act) {
    return [act = std::move(act)](const PageRequest& request) {
        const JsonParseResult parsed = JsonParser::parse(request.body);
        std::string error = parsed.error;
        if (!parsed.ok || !act(parsed.value, request.tab, error)) {
            return refusal(badRequest, error);
        }
        return jsonReply("{}");
    };
}
