#include "ServiceTestSupport.h"
#include "velmo/foundation/NotificationCenter.h"
#include "velmo/service/ProjectDictionaryExtensions.h"
#include "velmo/service/ValueObject.h"

using namespace velmo;
using namespace velmo::test;

namespace {

/// The account cache's notifications, as (name, object's value) in the order they came.
class Notifications {
public:
    Notifications() {
        for (const char* name :
             {kVPCachedProjectsUpdateNotifKey, kVPCachedTeamsUpdateNotifKey, kVPCachedUserUpdateNotifKey}) {
            observers_.emplace_back(
                NotificationCenter::defaultCenter(),
                NotificationCenter::defaultCenter().addObserver(name, nullptr, [this](const Notification& n) {
                    const auto boxed = std::dynamic_pointer_cast<ValueObject>(n.object);
                    seen.emplace_back(n.name, boxed ? boxed->value() : Value());
                }));
        }
    }
    std::vector<std::pair<std::string, Value>> seen;

private:
    std::vector<ScopedObserver> observers_;
};

Dictionary record(const char* text) {
    return json(text).dictionary();
}

std::vector<std::string> ids(const Array& records) {
    std::vector<std::string> found;
    for (const Value& r : records)
        found.push_back(r.dictionary().get("id").str());
    return found;
}

} // namespace

TEST_F(ServiceTest, EverySetterNotifiesWithItsNewValueAndClearingNotifiesThriceWithNone) {
    VPAccountData& account = VPAccountData::shared();
    Notifications notifications;
    const Array projects = json(R"([{"id":"p1"}])").array();
    const Array teams = json(R"([{"id":"m1","team":"t1"}])").array();
    account.setCachedProjects(projects);
    account.setCachedTeams(teams);
    account.setCachedUser(Value("ann@example.com"));
    account.clearCache();
    const std::vector<std::pair<std::string, Value>> expected = {
        {kVPCachedProjectsUpdateNotifKey, Value(projects)},
        {kVPCachedTeamsUpdateNotifKey, Value(teams)},
        {kVPCachedUserUpdateNotifKey, Value("ann@example.com")},
        {kVPCachedProjectsUpdateNotifKey, Value()},
        {kVPCachedTeamsUpdateNotifKey, Value()},
        {kVPCachedUserUpdateNotifKey, Value()},
    };
    EXPECT_EQ(notifications.seen, expected);
    EXPECT_TRUE(account.cachedProjects().isNil());
    EXPECT_TRUE(account.cachedProjectsEmpty()) << "no list counts as empty";
    EXPECT_TRUE(account.cachedTeamsEmpty());
    EXPECT_EQ(account.apiClient(), client) << "taken from the registry at creation";
}

TEST_F(ServiceTest, CachingAProjectReplacesAKnownOneAtTheEndAndPutsANewOneInFront) {
    peer.handle("GET", "/v2/users/me/team_memberships", answer(500, "{}"));
    startPeer();
    VPAccountData& account = VPAccountData::shared();
    account.setCachedTeams(json(R"([{"id":"m1","team":"t1","team_name":"One"}])").array());

    account.setCachedProjects(Array());
    account.cacheProject(record(R"({"id":"a","team":"t1"})"));
    EXPECT_EQ(ids(account.cachedProjects()), std::vector<std::string>{"a"}) << "no list: the one record";

    account.setCachedProjects(json(R"([{"id":"a","name":"old"},{"id":"b"}])").array());
    account.cacheProject(record(R"({"id":"a","name":"new"})"));
    EXPECT_EQ(Value(account.cachedProjects()), json(R"([{"id":"b"},{"id":"a","name":"new"}])"));

    // A known team is found by the membership's "id", not by its "team".
    account.cacheProject(record(R"({"id":"c","team":"m1"})"));
    EXPECT_EQ(ids(account.cachedProjects()), (std::vector<std::string>{"c", "b", "a"}));
    EXPECT_EQ(peer.requests().size(), 0u);

    // An unknown team: the teams are asked for, and the project goes in front of the list as it is
    // when the answer comes, whatever the answer.
    Notifications notifications;
    account.cacheProject(record(R"({"id":"d","team":"t1"})"));
    EXPECT_EQ(notifications.seen.size(), 0u);
    account.setCachedProjects(json(R"([{"id":"meanwhile"}])").array());
    ASSERT_TRUE(
        runMainLoopUntil([&] { return account.cachedProjects().size() == 2; }, std::chrono::seconds(10)));
    EXPECT_EQ(ids(account.cachedProjects()), (std::vector<std::string>{"d", "meanwhile"}));
    ASSERT_EQ(peer.requests().size(), 1u);
    EXPECT_EQ(peer.requests()[0].target, "/v2/users/me/team_memberships");
    EXPECT_EQ(ids(account.cachedTeams()), std::vector<std::string>{"m1"}) << "the answer isn't kept";
}

TEST_F(ServiceTest, TeamsAreCachedOnceInFrontAndLookedUpByTheirOwnKeys) {
    VPAccountData& account = VPAccountData::shared();
    account.setCachedTeams(Array());
    account.cacheTeam(record(R"({"id":"m1","team":"t1","team_name":"One"})"));
    account.cacheTeam(record(R"({"id":"m2","team":"t2"})"));
    Notifications notifications;
    account.cacheTeam(record(R"({"id":"m1","team":"t1","team_name":"Changed"})"));
    EXPECT_TRUE(notifications.seen.empty()) << "a known membership changes nothing";
    EXPECT_EQ(ids(account.cachedTeams()), (std::vector<std::string>{"m2", "m1"}));
    account.cacheTeam(record(R"({"id":"m3","team_name":"No team"})"));

    EXPECT_EQ(Value(account.teamNames()), json(R"({"":"No team","t2":"","t1":"One"})"));
    EXPECT_EQ(account.teamWithId(Value("m2")).get("team"), Value("t2"));
    EXPECT_TRUE(account.teamWithId(Value("t2")).isNil());
    EXPECT_TRUE(account.teamWithSlug(Value("one")).isNil());

    account.setCachedProjects(json(R"([{"id":"p1","name":"Site","team":"t1"},{"id":"p2","name":"Notes"},
                                         {"id":"p3","team":"t9"}])")
                                  .array());
    struct Case {
        const char* id;
        bool valid;
        Value name;
        std::string teamName;
    };
    for (const Case& c : std::vector<Case>{{"p1", true, Value("Site"), "One"},
                                           {"p2", true, Value("Notes"), "Personal"},
                                           {"p3", true, Value(), ""},
                                           {"p4", false, Value(), ""}}) {
        EXPECT_EQ(account.isValidProjectId(Value(c.id)), c.valid) << c.id;
        EXPECT_EQ(account.nameOfProjectWithId(Value(c.id)), c.name) << c.id;
        if (c.valid) {
            EXPECT_EQ(_projectDic_teamName(account.projectWithId(Value(c.id))), c.teamName) << c.id;
        }
    }
    EXPECT_TRUE(account.projectWithId(Value()).isNil());
    EXPECT_EQ(_projectDic_teamID(account.projectWithId(Value("p1"))), Value("t1"));
    EXPECT_EQ(_projectDic_projectName(account.projectWithId(Value("p2"))), Value("Notes"));
}
