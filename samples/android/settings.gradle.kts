// SPDX-License-Identifier: Apache-2.0
pluginManagement {
    repositories {
        google()
        mavenCentral()
        gradlePluginPortal()
    }
}
dependencyResolutionManagement {
    repositories {
        google()
        mavenCentral()
        // What `./dev android` has made.
        maven { url = uri("../../out/android/repository") }
    }
}
rootProject.name = "korvane-sample"
include(":app")
