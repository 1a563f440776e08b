#include "companion/page/page.h"

#include <utility>

PageReply jsonReply(std::string json) {
    return {200, "application/json", std::move(json)};
}

PageReply refusal(int status, std::string_view reason) {
    return {status, "text/plain; charset=utf-8", std::string(reason) + '\n'};
}
