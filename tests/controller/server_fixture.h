// A server on a free loopback port, with the faults and limits that a test asks for.
#ifndef TAVMIR_TESTS_CONTROLLER_SERVER_FIXTURE_H
#define TAVMIR_TESTS_CONTROLLER_SERVER_FIXTURE_H

#include "controller/server.h"
#include "frames.h"
#include "test_client.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace tavmir::test
{

class ServerFixture : public ::testing::Test
{
protected:
    ServerFixture()
    {
        haveApplication();
        settings.log = [this](const QString& line) { log.append(line); };
    }

    // Call once, after the settings are as the test wants them.
    void start(const QStringList& faultRules = {}, std::uint64_t seed = 1)
    {
        std::vector<controller::FaultRule> rules;
        for (const QString& text : faultRules) {
            QString problem;
            const auto rule = controller::parseFaultRule(text, &problem);
            ASSERT_TRUE(rule) << problem.toStdString();
            rules.push_back(*rule);
        }
        simulation = std::make_unique<controller::Simulation>(controller::FaultPlan(rules, seed));
        server = std::make_unique<controller::Server>(settings, *simulation);
        ASSERT_TRUE(server->listen(QHostAddress(QHostAddress::LocalHost), 0));
    }

    const controller::Statistics& statistics() { return simulation->statistics(); }

    // The value of a word, read by a client of its own: the controller serves others.
    bool servesANewClient()
    {
        TestClient client;
        return client.connectTo(server->port()) &&
               client.exchange(readFrame(77, 1, 102, {16}), 15).left(2) == bigEndian(77, 2);
    }

    QStringList log;
    controller::ServerSettings settings;
    std::unique_ptr<controller::Simulation> simulation;
    std::unique_ptr<controller::Server> server;
};

} // namespace tavmir::test

#endif
