#include "ReviewReport.h"

#include <nlohmann/json.hpp>

namespace velmorant::review {

std::string reviewJson(const Review& review) {
    using json = nlohmann::json;
    json items = json::array();
    for (const ItemReview& r : review.items) {
        json fields = json::array();
        for (const FieldChange& f : r.fields)
            fields.push_back({{"subject", f.subject}, {"field", f.field}, {"before", f.before}, {"after", f.after},
                              {"words", f.words()}});
        json item = {{"id", r.item.id},
                     {"card", r.item.card},
                     {"title", r.item.title},
                     {"status", statusWords(r.status)},
                     {"changedPixels", r.pixels.changedPixels},
                     {"antiAliasedPixels", r.pixels.antiAliasedPixels},
                     {"sizeDiffers", r.pixels.sizeDiffers},
                     {"fields", fields}};
        if (r.pixels.changedPixels || r.pixels.antiAliasedPixels)
            item["box"] = {{"left", r.pixels.left}, {"top", r.pixels.top}, {"right", r.pixels.right}, {"bottom", r.pixels.bottom}};
        if (r.status == ItemStatus::Changed || r.status == ItemStatus::Added || r.status == ItemStatus::Removed)
            item["accept"] = acceptCommand(review, {r.item.id});
        items.push_back(std::move(item));
    }
    json result = {{"summary", review.summary()},
                   {"exitStatus", review.exitStatus()},
                   {"notReproducible", review.notReproducible()},
                   {"new", review.newDir.string()},
                   {"baseline", review.baselineDir.string()},
                   {"threshold", review.options.threshold},
                   {"allowedPixels", review.options.allowedPixels},
                   {"differingInputs", review.differingInputs},
                   {"acceptAll", acceptCommand(review)},
                   {"items", items}};
    return result.dump(1) + "\n";
}

}  // namespace velmorant::review
