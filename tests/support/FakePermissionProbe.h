#pragma once

#include "PermissionProbe.h"

// Answers what the test says and counts the questions.
class FakePermissionProbe : public PermissionProbe {
public:
    FakePermissionProbe(bool observe, bool post) : observeGranted(observe), postGranted(post) {}

    bool canObserveKeys() override {
        ++observeQuestions;
        return observeGranted;
    }
    bool canPostKeys() override {
        ++postQuestions;
        return postGranted;
    }

    QString observeProblem() const override { return QStringLiteral("the test keeps the keys"); }
    QString postProblem() const override { return QStringLiteral("the test keeps the output"); }

    bool observeGranted;
    bool postGranted;
    int observeQuestions = 0;
    int postQuestions = 0;
};
